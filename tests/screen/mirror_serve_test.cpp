#include <thread>

#include "http/client.h"
#include "image/image_reader.h"
#include "screen/mirror_fixture.h"

namespace tandrel {
namespace {

// Runs the tool on a thread of its own and learns its port from what it prints.
class MirrorServe : public MirrorFixture {
 protected:
    class SharedText final : public std::streambuf {
     public:
        std::string text() {
            std::lock_guard lock(mutex_);
            return text_;
        }

     private:
        int_type overflow(int_type c) override {
            std::lock_guard lock(mutex_);
            text_.push_back(static_cast<char>(c));
            return c;
        }
        std::mutex mutex_;
        std::string text_;
    };

    ~MirrorServe() override { stopping.request_stop(); }
    void begin(const MirrorArgs& args) {
        tool = std::jthread([this, args] { status = *mirrorCommand(args, served); });
        while (said.text().find('\n') == std::string::npos) std::this_thread::yield();
        const std::string line = said.text();
        const auto port = std::stoi(line.substr(line.find("127.0.0.1:") + 10));
        url = LoopbackUrl::ofPort(static_cast<std::uint16_t>(port));
    }
    void end() {
        EXPECT_EQ(httpGet(url, "/quit")->json(), Json({{"ok", true}}));
        tool.join();
        EXPECT_EQ(status, 0);
    }

    SharedText said;
    std::ostream saidStream{&said};
    MirrorServices served{.out = out,
                          .err = saidStream,
                          .makeRecognizer = services.makeRecognizer,
                          .openPlatform = services.openPlatform,
                          .openInput = services.openInput};
    LoopbackUrl url;
    int status = -1;
    std::jthread tool;
};

TEST_F(MirrorServe, AirplayServeAnswersUntilItIsToldToQuit) {
    windows.show(FakeWindows::receiver());
    windows.drawAtOpen(pictures::noise(300, 650));
    begin({"airplay-serve", "--port", "0"});
    EXPECT_TRUE(said.text().starts_with("tandrel-mirror airplay-serve on 127.0.0.1:"));
    EXPECT_TRUE(said.text().ends_with(" (screen recording: true)\n"));
    EXPECT_EQ(httpGet(url, "/status")->json()["app"], "tandrel-mirror");
    EXPECT_EQ(decodeImage(httpGet(url, "/frame.png?maxEdge=65")->body)->height(), 65);
    end();
}

TEST_F(MirrorServe, UsbServeServesACabledPhone) {
    devices.setOnOpened(pictures::noise(120, 260));
    devices.plugIn(FakeCaptureDevices::phone("A1", "Anna"));
    begin({"usb-serve", "--port", "0"});
    EXPECT_TRUE(said.text().ends_with(" (Anna)\n"));
    EXPECT_EQ(decodeImage(httpGet(url, "/frame.png")->body)->height(), 260);
    EXPECT_EQ(httpGet(url, "/changes")->json()["changes"], Json::array());
    end();
}

TEST_F(MirrorServe, SaysThatAPortIsTakenAndEndsAtCtrlC) {
    begin({"airplay-serve", "--port", "0"});
    EXPECT_EQ(failure({"airplay-serve", "--port", std::to_string(url.port)}),
              "cannot listen on 127.0.0.1:" + std::to_string(url.port));
    EXPECT_EQ(failure({"airplay-serve", "--port", "70000"}),
              "--port takes a number from 0 to 65535");
    stopping.request_stop();
    tool.join();
    EXPECT_EQ(status, 0);
}

TEST_F(MirrorServe, CaptureLatencyCountsFrames) {
    windows.show(FakeWindows::receiver());
    windows.drawAtOpen(pictures::noise(300, 650));
    EXPECT_EQ(run({"capture-latency", "--seconds", "2"}), 0);
    EXPECT_EQ(result()["frames"], 1);
    EXPECT_EQ(result()["fps"], 0.5);
    EXPECT_EQ(result()["window"]["id"], 7);
}

}  // namespace
}  // namespace tandrel
