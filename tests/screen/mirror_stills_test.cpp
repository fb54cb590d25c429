#include "screen/mirror_stills.h"

#include "image/image_reader.h"
#include "screen/mirror_fixture.h"

namespace tandrel {
namespace {

class MirrorStills : public MirrorFixture {
 protected:
    MirrorStills() {
        devices.setOnOpened(pictures::noise(120, 260));
        windows.drawAtOpen(pictures::phoneInAWindow());
    }
    Size sizeOf(const std::string& path) {
        const PixelBuffer image = readImage(path).value_or(PixelBuffer());
        return {image.width(), image.height()};
    }
};

TEST_F(MirrorStills, UsbCaptureSavesTheFirstPhonesFrame) {
    devices.plugIn(FakeCaptureDevices::phone("A1", "Anna"));
    EXPECT_EQ(run({"usb-capture", file("a.png")}), 0);
    EXPECT_EQ(sizeOf(file("a.png")), (Size{120, 260}));
    EXPECT_EQ(result()["age_ms"], 0);
    EXPECT_FALSE(result().contains("ocr"));
    EXPECT_EQ(run({"usb-capture", file("a.jpg"), "--max", "130", "--ocr"}), 0);
    EXPECT_EQ(sizeOf(file("a.jpg")), (Size{60, 130}));
    EXPECT_EQ(result()["ocr"][0]["h"], 130);
    EXPECT_EQ(err.str(), "");
}

TEST_F(MirrorStills, UsbCaptureFailsInOneSentence) {
    const std::string path = file("a.png");
    constexpr const char* kNoPhone =
        "no iPhone screen found over USB: plug it in with a data cable, unlock it and tap Trust "
        "(then retry)";
    EXPECT_EQ(failure({"usb-capture", path, "--timeout", "1"}), kNoPhone);
    devices.plugIn(FakeCaptureDevices::phone("A1", "Anna"));
    EXPECT_EQ(failure({"usb-capture", path, "--device", "B2"}), kNoPhone);
    EXPECT_EQ(failure({"usb-capture", "/nowhere/at/all.png"}), "cannot write /nowhere/at/all.png");
    devices.refuse("A1", "busy");
    EXPECT_EQ(failure({"usb-capture", path}), "cannot capture Anna");
    devices.refuse("A1", std::nullopt);
    devices.setOnOpened({});
    EXPECT_EQ(failure({"usb-capture", path}), "no frame yet from Anna (is the iPhone unlocked?)");
    permissions.cameraAnswer = Permission::denied;
    EXPECT_EQ(failure({"usb-capture", path}),
              "camera access denied: allow it for your terminal app in System Settings › Privacy & "
              "Security › Camera");
    EXPECT_EQ(failure({"usb-capture", path, "--image", "/nowhere.png"}),
              "cannot read /nowhere.png");
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(MirrorStills, AirplayCaptureCutsThePhoneOut) {
    windows.show(FakeWindows::receiver());
    EXPECT_EQ(run({"airplay-capture", file("a.png")}), 0);
    EXPECT_EQ(sizeOf(file("a.png")), (Size{603, 1311}));
    EXPECT_EQ(result()["content"]["method"], "edges");
    EXPECT_EQ(result()["window"]["id"], 7);
    EXPECT_EQ(run({"airplay-capture", file("b.png"), "--no-crop", "--max", "700"}), 0);
    EXPECT_EQ(sizeOf(file("b.png")), (Size{400, 700}));
    EXPECT_EQ(run({"airplay-capture", file("c.png"), "--window", "7", "--ocr"}), 0);
    EXPECT_EQ(result()["ocr"][0]["w"], 603);
    EXPECT_FALSE(windows.draw(7, pictures::noise(4, 4))) << "no capture is left running";
}

TEST_F(MirrorStills, AirplayCaptureFailsInOneSentence) {
    const std::string path = file("a.png");
    EXPECT_EQ(failure({"airplay-capture", path}),
              "no AirPlay mirroring window: on the iPhone open Control Center › Screen Mirroring › "
              "choose this Mac");
    EXPECT_EQ(failure({"airplay-capture", path, "--window", "9"}), "window 9 is gone");
    EXPECT_EQ(failure({"airplay-capture", path, "--window", "x"}),
              "--window takes a number from 0 to 4294967295");
    windows.refuse("there is no display");
    EXPECT_EQ(failure({"airplay-capture", path}), "there is no display");
    windows.refuse("");
    windows.show(FakeWindows::receiver());
    windows.drawAtOpen({});
    stopping.request_stop();
    EXPECT_EQ(failure({"airplay-capture", path}), "no frame yet from the AirPlay window");
}

}  // namespace
}  // namespace tandrel
