#include "app/screenshots.h"

#include <filesystem>

#include <gmock/gmock.h>

#include "app/running_program.h"

namespace tandrel {
namespace {

class Render : public testing::TestWithParam<std::vector<std::string>> {};

// Nothing clipped, nothing overlapping and every text readable, in light and dark and with the text
// twice as large: the renderer looks each picture over and names what it finds.
TEST_P(Render, DrawsEveryWindowWithoutAFault) {
    const TemporaryFolder home;
    const auto folder = home.path() / "new/pictures";
    std::vector<std::string> words = {"--render-steps", folder.string()};
    words.insert(words.end(), GetParam().begin(), GetParam().end());
    const ProgramResult result = runApp(words, home.path());
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, testing::Not(testing::HasSubstr("fault:")));
    EXPECT_THAT(result.output, testing::ContainsRegex("[3-9][0-9] pictures, 0 faults\n$"));
    for (const char* name : {"setup-1-bluetooth-open", "setup-6-test-done", "menu-ready",
                             "notice-locked", "approval-panel", "approvals", "tray-icons"}) {
        EXPECT_GT(std::filesystem::file_size(folder / (std::string(name) + ".png")), 500) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Looks, Render,
                         testing::Values(std::vector<std::string>{},
                                         std::vector<std::string>{"--dark"},
                                         std::vector<std::string>{"--scale", "2"},
                                         std::vector<std::string>{"--dark", "--scale", "2"}));

TEST(Screenshots, TakesAFolderAndItsTwoOptions) {
    const std::vector<std::string> refused[] = {
        {},
        {"--dark"},
        {"dir", "more"},
        {"dir", "--scale"},
        {"dir", "--scale", "0.5"},
        {"dir", "--scale", "4"},
        {"dir", "--bright"},
    };
    for (const auto& arguments : refused) {
        EXPECT_FALSE(Screenshots::parse(arguments)) << testing::PrintToString(arguments);
    }
    EXPECT_EQ(Screenshots::parse({"dir"}).value().appearance, ColorScheme::light);
    const auto options = Screenshots::parse({"--dark", "dir", "--scale", "1.5"}).value();
    EXPECT_EQ(options.folder, "dir");
    EXPECT_EQ(options.appearance, ColorScheme::dark);
    EXPECT_EQ(options.textScale, 1.5);
}

}  // namespace
}  // namespace tandrel
