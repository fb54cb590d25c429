#include "screen/mirror_command.h"

#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>
#include <stdlib.h>

#include "base/file.h"
#include "image/pictures.h"
#include "screen/size_reader.h"
#include "screen/snapshot.h"

namespace tandrel {
namespace {

using pictures::Colour;

class MirrorTool : public testing::Test {
 protected:
    MirrorTool() {
        char name[] = "/tmp/tandrel-mirror-XXXXXX";
        folder = ::mkdtemp(name);
    }
    ~MirrorTool() override { std::filesystem::remove_all(folder); }

    std::string saved(const std::string& name, const PixelBuffer& picture) {
        const auto path = folder / name;
        EXPECT_TRUE(replaceFile(path, toText(*encodeSnapshot(picture, {}))));
        return path.string();
    }
    std::optional<int> run(std::vector<std::string> args) {
        out.str("");
        err.str("");
        return mirrorCommand(args, services);
    }

    std::filesystem::path folder;
    std::ostringstream out;
    std::ostringstream err;
    MirrorServices services{out, err, [] { return std::make_unique<SizeReader>(); }, {}, {}};
};

constexpr const char* kOcrUsage = "usage: ocr <image>\n";
constexpr const char* kUsbUsage =
    "usage: usb-capture <out.png|.jpg> [--device ID] [--max N] [--ocr] [--timeout S]\n";
constexpr const char* kAirplayUsage =
    "usage: airplay-capture <out.png|.jpg> [--window ID] [--max N] [--ocr] [--no-crop]\n";
constexpr const char* kDetectUsage =
    "usage: detect-rect <image> [--aspect W/H] [--prefer portrait|landscape]\n";

TEST_F(MirrorTool, UnknownWordsAreNotItsOwn) {
    EXPECT_EQ(run({}), std::nullopt);
    EXPECT_EQ(run({"dance"}), std::nullopt);
    EXPECT_EQ(run({"OCR", "x.png"}), std::nullopt);
    EXPECT_EQ(out.str() + err.str(), "");
}

TEST_F(MirrorTool, WithoutItsOperandSaysHowItIsUsed) {
    const struct {
        std::vector<std::string> args;
        const char* usage;
    } rows[] = {
        {{"ocr"}, kOcrUsage},
        {{"ocr", "--max"}, kOcrUsage},
        {{"usb-capture"}, kUsbUsage},
        {{"usb-capture", "--ocr"}, kUsbUsage},
        {{"airplay-capture"}, kAirplayUsage},
        {{"airplay-capture", "--no-crop", "a.png"}, kAirplayUsage},
        {{"detect-rect"}, kDetectUsage},
        {{"detect-rect", "--aspect", "9/19.5"}, kDetectUsage},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(run(row.args), 1);
        EXPECT_EQ(err.str(), row.usage);
        EXPECT_EQ(out.str(), "");
    }
}

TEST_F(MirrorTool, HelpIsTheUsageAndNoFailure) {
    EXPECT_EQ(run({"detect-rect", "--help"}), 0);
    EXPECT_EQ(out.str(),
              std::string(kDetectUsage) + "  find the phone's screen on a picture of a window\n");
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
    EXPECT_EQ(run({"help", "dance"}), 1);
    EXPECT_EQ(err.str(), "unknown command dance\n");
}

TEST_F(MirrorTool, AFileThatIsNoImageIsAFailure) {
    const std::string text = (folder / "notes.txt").string();
    ASSERT_TRUE(replaceFile(text, "hello"));
    for (const std::string tool : {"ocr", "detect-rect"}) {
        for (const std::string& path : {text, folder.string() + "/missing.png"}) {
            EXPECT_EQ(run({tool, path}), 1);
            EXPECT_EQ(err.str(), "cannot read " + path + "\n");
            EXPECT_EQ(out.str(), "");
        }
    }
}

TEST_F(MirrorTool, OcrPrintsTheRecords) {
    EXPECT_EQ(run({"ocr", saved("a.png", pictures::noise(31, 17))}), 0);
    EXPECT_EQ(out.str(), R"([{"conf":1.0,"h":17,"text":"seen","w":31,"x":0,"y":0}])"
                         "\n");
    EXPECT_EQ(err.str(), "");
}

TEST_F(MirrorTool, OcrWithoutARecognizerIsNoEmptyList) {
    services.makeRecognizer = []() -> Result<std::unique_ptr<TextRecognizer>> {
        return fail("no language data");
    };
    EXPECT_EQ(run({"ocr", saved("a.png", pictures::noise(31, 17))}), 1);
    EXPECT_EQ(err.str(), "no language data\n");
    EXPECT_EQ(out.str(), "");
}

TEST_F(MirrorTool, DetectRectPrintsTheContent) {
    // A phone's screen of 603 x 1311 in a black window.
    const std::string path = saved("window.png", pictures::drawn(800, 1400, [](int x, int y) {
                                       const bool screen =
                                           x >= 90 && x < 693 && y >= 40 && y < 1351;
                                       return screen ? Colour{40, 80, 120} : pictures::kBlack;
                                   }));
    EXPECT_EQ(run({"detect-rect", path}), 0);
    EXPECT_EQ(out.str(),
              R"({"h":1311,"method":"edges","orientation":"portrait","w":603,"x":90,"y":40})"
              "\n");
}

TEST_F(MirrorTool, DetectRectTakesShapeAndOrientation) {
    const std::string path = saved("black.png", pictures::plain(300, 400, pictures::kBlack));
    EXPECT_EQ(run({"detect-rect", path, "--prefer", "landscape", "--aspect", "2"}), 0);
    EXPECT_EQ(out.str(),
              R"({"h":150,"method":"blank","orientation":"landscape","w":300,"x":0,"y":125})"
              "\n");
}

TEST_F(MirrorTool, AResultThatCannotBeWrittenIsAFailure) {
    const std::string path = saved("black.png", pictures::plain(30, 40, pictures::kBlack));
    out.setstate(std::ios::badbit);
    EXPECT_EQ(run({"detect-rect", path}), 1);
    EXPECT_EQ(err.str(), "cannot write the result\n");
}

TEST(MirrorOption, IsTheArgumentAfterItsName) {
    const std::vector<std::string> args{"x", "--max", "10", "--max", "20", "--last"};
    EXPECT_EQ(option(args, "--max"), "10");
    EXPECT_EQ(option(args, "--last"), std::nullopt);
    EXPECT_EQ(option(args, "--none"), std::nullopt);
}

}  // namespace
}  // namespace tandrel
