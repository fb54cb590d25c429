#include "app/mirror_tools.h"

#include <gmock/gmock.h>

#include "app/running_program.h"
#include "base/json.h"
#include "image/image_reader.h"
#include "platform/linux/x_desktop.h"

namespace tandrel {
namespace {

// The tools as a person runs them, on a desktop where the application shows a virtual phone.
class ToolsOnADesktop : public testing::Test {
 protected:
    void SetUp() override {
        desktop = XDesktop::open(XDesktop::Manager::none);
        if (!desktop) GTEST_SKIP() << "Xvfb is not installed";
        phone = std::make_unique<RunningProgram>(ChildProgram::Environment{
            {"DISPLAY", desktop->name()}, {"TANDREL_VIRTUAL_PHONE", "1"}});
        phone->awaitMatched();
    }
    ProgramResult run(const std::vector<std::string>& words) {
        return runApp(words, phone->home(), {{"DISPLAY", desktop->name()}});
    }
    Json result(const std::vector<std::string>& words) {
        const auto [status, output] = run(words);
        EXPECT_EQ(status, 0) << words.front() << ": " << output;
        // Lines of the log come before it.
        const auto start = output.find_last_of('\n', output.size() - 2);
        return parseJson(output.substr(start == std::string::npos ? 0 : start + 1))
            .value_or(Json());
    }

    std::unique_ptr<XDesktop> desktop;
    std::unique_ptr<RunningProgram> phone;
};

TEST_F(ToolsOnADesktop, FindTheVirtualPhonesWindowTakeItsPictureAndDriveIt) {
    const Json window = result({"find"});
    EXPECT_EQ(window["title"], "Virtual iPhone");
    EXPECT_EQ(result({"airplay-list"})[0]["id"], window["id"]);
    const auto path = phone->home() / "window.png";
    EXPECT_EQ(result({"airplay-capture", path.string(), "--no-crop"})["h"], window["h"]);
    const auto picture = readImage(path).value();
    EXPECT_EQ(picture.width(), window["w"]);
    EXPECT_EQ(result({"screen"}), Json({{"screen", true}}));
    EXPECT_EQ(result({"accessibility"}), Json({{"accessibility", true}}));

    EXPECT_EQ(result({"click", "0.616", "0.25", "--fraction"})["ok"], true);
    phone->awaitText("Airplane Mode");
    EXPECT_EQ(result({"key", "space", "--modifiers", "cmd"})["ok"], true);
    EXPECT_EQ(result({"type", "Shop"})["ok"], true);
    EXPECT_EQ(result({"key", "return"})["ok"], true);
    phone->awaitText("Canvas tote bag");
    const auto [status, output] = run({"click", "5000", "10"});
    EXPECT_EQ(status, 1);
    EXPECT_THAT(output, testing::HasSubstr("the place lies outside the window"));
}

}  // namespace
}  // namespace tandrel
