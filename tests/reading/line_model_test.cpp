#include <random>

#include <gtest/gtest.h>

#include "base/bytes.h"
#include "base/file.h"
#include "reading/network_strip_reader.h"
#include "reading/trained_strip_reader.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

constexpr const char* kFolder = "/usr/share/tesseract-ocr/5/tessdata/";

const Bytes& english() {
    static const Bytes file =
        toBytes(readFile(std::string(kFolder) + "eng.traineddata", kLargestTrainedData).value());
    return file;
}

// The network lies before the dictionaries and the letters behind them, so this much holds the
// network alone.
constexpr std::size_t kHeadBytes = 400000;

TEST(LineModel, readsTheSizesOfTheEnglishFile) {
    const auto model = parseLineModel(english());
    ASSERT_TRUE(model) << model.error().message;
    EXPECT_EQ(lstmSize(model->down), 48);
    EXPECT_EQ(lstmSize(model->right), 96);
    EXPECT_EQ(lstmSize(model->rightAgain), 192);
    EXPECT_EQ(model->output.outputs(), 111);
    EXPECT_EQ(model->letters[0], " ");
    EXPECT_EQ(std::ranges::count(model->letters, "€"), 1);
    EXPECT_EQ(model->letters[static_cast<std::size_t>(model->noLetter)], "");
}

TEST(LineModel, refusesTruncatedFiles) {
    const std::span<const std::uint8_t> file(english());
    for (const std::size_t size :
         {0ul, 3ul, 4ul, 100ul, 195ul, 200ul, 250ul, 1000ul, 50000ul, kHeadBytes}) {
        EXPECT_FALSE(parseLineModel(file.first(size))) << size;
    }
}

TEST(LineModel, refusesOtherKindsOfFile) {
    const auto other = readFile(std::string(kFolder) + "osd.traineddata", kLargestTrainedData);
    if (!other) GTEST_SKIP() << "osd.traineddata is not installed";
    EXPECT_FALSE(parseLineModel(toBytes(*other)));
    EXPECT_FALSE(parseLineModel(toBytes("%PDF-1.4 something else altogether")));
}

TEST(LineModel, damagedFilesAreRefusedOrRun) {
    std::mt19937 random(7);
    Strip strip;
    strip.columns = 60;
    strip.pixels.assign(std::size_t{60} * Strip::kRows, 200);
    for (int round = 0; round < 60; ++round) {
        Bytes damaged = english();
        for (int i = 0; i < 4; ++i) damaged[random() % 3000] = static_cast<std::uint8_t>(random());
        auto model = parseLineModel(damaged);
        if (!model) continue;
        EXPECT_TRUE(NetworkStripReader(*std::move(model)).read(std::span(&strip, 1)));
    }
}

class LastResort : public StripReader {
    Result<std::vector<StripText>> read(std::span<const Strip> strips) override {
        return std::vector<StripText>(strips.size(), {.text = "read by the fallback"});
    }
};

std::string readWith(const std::string& file) {
    TemporaryFolder folder;
    EXPECT_TRUE(replaceFile(folder.path() / "eng.traineddata", file));
    TrainedStripReader reader(folder.path().string(), "eng", std::make_unique<LastResort>());
    Strip strip;
    strip.columns = 30;
    strip.pixels.assign(std::size_t{30} * Strip::kRows, 255);
    return reader.read(std::span(&strip, 1)).value().front().text;
}

TEST(TrainedStripReader, runsItsOwnNetworkAndTakesTheFallbackForAFileOfAnotherKind) {
    EXPECT_EQ(readWith(toText(english())), "");
    EXPECT_EQ(readWith("no traineddata"), "read by the fallback");
}

}  // namespace
}  // namespace tandrel
