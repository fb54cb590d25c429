#include "screen/mirror_fixture.h"

namespace tandrel {
namespace {

class MirrorTool : public MirrorFixture {};

constexpr const char* kOcrUsage = "usage: ocr <image>";
constexpr const char* kUsbUsage =
    "usage: usb-capture <out.png|.jpg> [--device ID] [--max N] [--ocr] [--timeout S]";
constexpr const char* kAirplayUsage =
    "usage: airplay-capture <out.png|.jpg> [--window ID] [--max N] [--ocr] [--no-crop]";
constexpr const char* kDetectUsage =
    "usage: detect-rect <image> [--aspect W/H] [--prefer portrait|landscape]";

TEST_F(MirrorTool, UnknownWordsAreNotItsOwn) {
    EXPECT_EQ(mirrorCommand({}, services), std::nullopt);
    EXPECT_EQ(mirrorCommand({"dance"}, services), std::nullopt);
    EXPECT_EQ(mirrorCommand({"OCR", "x.png"}, services), std::nullopt);
    EXPECT_EQ(out.str() + err.str(), "");
}

TEST_F(MirrorTool, WithoutItsOperandSaysHowItIsUsed) {
    const std::pair<MirrorArgs, const char*> rows[] = {
        {{"ocr"}, kOcrUsage},
        {{"ocr", "--max"}, kOcrUsage},
        {{"usb-capture"}, kUsbUsage},
        {{"airplay-capture", "--no-crop", "a.png"}, kAirplayUsage},
        {{"detect-rect", "--aspect", "9/19.5"}, kDetectUsage},
    };
    for (const auto& [args, usage] : rows) EXPECT_EQ(failure(args), usage);
}

TEST_F(MirrorTool, HelpIsTheUsageAndNoFailure) {
    EXPECT_EQ(run({"detect-rect", "--help"}), 0);
    EXPECT_EQ(out.str(),
              std::string(kDetectUsage) + "\n  find the phone's screen on a picture of a window\n");
    EXPECT_EQ(err.str(), "");
}

TEST_F(MirrorTool, HelpListsEveryTool) {
    EXPECT_EQ(run({"help"}), 0);
    for (const char* name :
         {"find", "ocr", "click", "drag", "type", "key", "activate", "trusted", "accessibility",
          "screen", "camera", "usb-list", "usb-capture", "usb-serve", "airplay-list",
          "airplay-capture", "airplay-serve", "detect-rect", "capture-latency"}) {
        EXPECT_NE(out.str().find(std::string("  ") + name + " "), std::string::npos) << name;
    }
    EXPECT_EQ(run({"help", "usb-capture"}), 0);
    EXPECT_TRUE(out.str().starts_with(kUsbUsage)) << out.str();
    EXPECT_EQ(failure({"help", "dance"}), "unknown command dance");
}

TEST_F(MirrorTool, OcrPrintsTheRecordsOrWhyThereAreNone) {
    const std::string path = saved(pictures::noise(31, 17));
    EXPECT_EQ(run({"ocr", path}), 0);
    EXPECT_EQ(out.str(), R"([{"conf":1.0,"h":17,"text":"seen","w":31,"x":0,"y":0}])"
                         "\n");
    EXPECT_EQ(err.str(), "");
    services.makeRecognizer = []() -> Result<std::unique_ptr<TextRecognizer>> {
        return fail("no language data");
    };
    EXPECT_EQ(failure({"ocr", path}), "no language data");
}

TEST_F(MirrorTool, DetectRectPrintsTheContent) {
    EXPECT_EQ(run({"detect-rect", saved(pictures::phoneInAWindow())}), 0);
    EXPECT_EQ(out.str(),
              R"({"h":1311,"method":"edges","orientation":"portrait","w":603,"x":90,"y":40})"
              "\n");
    const std::string black = saved(pictures::plain(300, 400, pictures::kBlack));
    EXPECT_EQ(run({"detect-rect", black, "--prefer", "landscape", "--aspect", "2"}), 0);
    EXPECT_EQ(out.str(),
              R"({"h":150,"method":"blank","orientation":"landscape","w":300,"x":0,"y":125})"
              "\n");
    out.setstate(std::ios::badbit);
    EXPECT_EQ(failure({"detect-rect", black}), "cannot write the result");
}

TEST(MirrorOption, IsTheArgumentAfterItsName) {
    const std::vector<std::string> args{"x", "--max", "10", "--max", "20", "--last"};
    EXPECT_EQ(option(args, "--max"), "10");
    EXPECT_EQ(option(args, "--last"), std::nullopt);
    EXPECT_EQ(option(args, "--none"), std::nullopt);
}

}  // namespace
}  // namespace tandrel
