#include "devices/pairings_file.h"

#include <fstream>

#include <gtest/gtest.h>

#include "support/temporary_folder.h"

namespace tandrel {
namespace {

constexpr const char* kHost = "6F1C1D6A-0B5E-4E5E-9C57-0C8F6E2A9B11";

class PairingsFile : public testing::Test {
 protected:
    void write(const std::string& text) { std::ofstream(file) << text; }

    TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "deep/pairings.json";
};

TEST_F(PairingsFile, KeepsPairsThroughARestart) {
    const Pairings pairings = {{"screen \"1\"", *Uuid::parse(kHost)}};
    ASSERT_TRUE(storePairings(file, pairings));
    EXPECT_EQ(loadPairings(file), pairings);
}

TEST_F(PairingsFile, ReadsWhatItCanOfABrokenFile) {
    std::filesystem::create_directories(file.parent_path());
    const std::pair<std::string, std::size_t> rows[] = {
        {"", 0},
        {R"({"a":"6F1C1D6A-)", 0},
        {R"(["a"])", 0},
        {std::string(R"({"a":7,"b":"x","c":")") + kHost + "\"}", 1},
        {R"({"a":"6f1c1d6a-0b5e-4e5e-9c57-0c8f6e2a9b11"})", 1},
    };
    for (const auto& [text, pairs] : rows) {
        write(text);
        EXPECT_EQ(loadPairings(file).size(), pairs) << text;
    }
}

TEST_F(PairingsFile, AFolderInItsPlaceIsAnErrorAndNoPairs) {
    std::filesystem::create_directories(file / "x");
    EXPECT_TRUE(loadPairings(file).empty());
    EXPECT_FALSE(storePairings(file, {}));
}

}  // namespace
}  // namespace tandrel
