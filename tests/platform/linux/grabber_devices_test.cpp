#include "platform/linux/grabber_devices.h"

#include <cerrno>
#include <semaphore>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "image/jpeg_writer.h"
#include "platform/linux/fake_grabber.h"
#include "platform/linux/taken_frames.h"
#include "platform/linux/video_offer.h"
#include "platform/linux/video_stream.h"
#include "support/eventually.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kPath = "/dev/video0";
constexpr const char* kCard = "USB Video: USB Video";

// The cheap one with USB 2: raw pictures only a few times a second.
const GrabberAnswers kCheap = {
    kCard,
    {{V4L2_PIX_FMT_MJPEG, {{1920, 1080, {60, 50, 30}}, {720, 480, {60, 30}}}},
     {V4L2_PIX_FMT_YUYV, {{1920, 1080, {5}}, {720, 480, {30}}}}}};
const GrabberAnswers kNv12 = {"UVC Camera HDMI",
                              {{V4L2_PIX_FMT_MJPEG, {{3840, 2160, {30}}, {1920, 1080, {60}}}},
                               {V4L2_PIX_FMT_NV12, {{3840, 2160, {30}}, {1920, 1080, {60}}}},
                               {V4L2_PIX_FMT_YUYV, {{3840, 2160, {15}}}}}};
const GrabberAnswers kBgr = {"PCIe card", {{V4L2_PIX_FMT_BGR24, {}}}};
const GrabberAnswers kSmall = {"Small", {{V4L2_PIX_FMT_YUYV, {{64, 48, {30}}}}}};
const GrabberAnswers kMetadata = {kCard, {}, V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING};

Bytes jpegOf(int width, int height) {
    const auto grey = PixelBuffer::make(width, height, nullptr);
    return *withPixels(grey, [](const Pixels& pixels) { return encodeJpeg(pixels, 80); });
}

class GrabberDevicesTest : public testing::Test {
 protected:
    using Size = TakenFrames::Size;

    void start(const std::optional<std::string>& chosen = kCard) {
        {
            std::lock_guard lock(mutex_);
            chosen_ = chosen;
        }
        const auto choice = [this] {
            std::lock_guard lock(mutex_);
            return chosen_;
        };
        devices_ = std::make_unique<GrabberDevices>(
            GrabberDevices::Options{.nodes = grabbers_.nodes(), .chosen = choice}, grabbers_,
            clock_);
        devices_->setOnDevicesChanged([this] { changes_.release(); });
        devices_->devices();  // the first look is over
    }
    void choose(const std::string& chosen) {
        {
            std::lock_guard lock(mutex_);
            chosen_ = chosen;
        }
        grabbers_.poke();
    }
    // Waits until the devices are these; says what they were at last.
    std::vector<std::string> awaitIds(const std::vector<std::string>& wanted) {
        for (;;) {
            std::vector<std::string> ids;
            for (const auto& device : devices_->devices()) ids.push_back(device.id);
            if (ids == wanted || !changes_.try_acquire_for(10s)) return ids;
        }
    }
    Result<std::unique_ptr<CaptureSession>> open() {
        return devices_->open(devices_->devices().at(0), frames_.sink());
    }
    std::string openError() {
        const auto session = open();
        return session ? "opened" : session.error().message;
    }
    // The small grabber streams and has shown a picture.
    std::unique_ptr<CaptureSession> showSmall() {
        grabbers_.plugIn(kPath, kSmall);
        start("Small");
        auto session = open();
        grabbers_.deliver(kPath, small_);
        EXPECT_EQ(frames_.next(), Size(64, 48));
        return *std::move(session);
    }

    FakeGrabbers grabbers_;
    ManualClock clock_;
    const Bytes small_ = Bytes(64 * 48 * 2, 128);
    TakenFrames frames_;
    std::counting_semaphore<> changes_{0};
    std::mutex mutex_;
    std::optional<std::string> chosen_;
    std::unique_ptr<GrabberDevices> devices_;
};

TEST_F(GrabberDevicesTest, TakesFromEachGrabberTheFormThatShowsAPhoneBest) {
    GrabberAnswers padded = kNv12;
    padded.bytesPerLine = 4096;
    GrabberAnswers settled = kCheap;
    settled.settlesFor = V4L2_PIX_FMT_YUYV;
    const std::tuple<const char*, GrabberAnswers, Bytes, std::uint32_t, Size> rows[] = {
        {"cheap", kCheap, jpegOf(1920, 1080), V4L2_PIX_FMT_MJPEG, {1920, 1080}},
        {"NV12", kNv12, Bytes(3840 * 2160 * 3 / 2), V4L2_PIX_FMT_NV12, {3840, 2160}},
        {"NV12, padded", padded, Bytes(4096 * 2160 * 3 / 2), V4L2_PIX_FMT_NV12, {3840, 2160}},
        {"BGR, no sizes", kBgr, Bytes(1920 * 1080 * 3), V4L2_PIX_FMT_BGR24, {1920, 1080}},
        {"other than asked", settled, Bytes(1920 * 1080 * 2), V4L2_PIX_FMT_YUYV, {1920, 1080}},
    };
    for (const auto& [name, answers, frame, pixelFormat, size] : rows) {
        SCOPED_TRACE(name);
        grabbers_.plugIn(kPath, answers);
        start(answers.card);
        const auto session = open();
        ASSERT_TRUE(session);
        grabbers_.deliver(kPath, frame);
        EXPECT_EQ(frames_.next(), size);
        EXPECT_EQ(grabbers_.with(kPath, [](auto& device) { return device.pixelFormat; }),
                  pixelFormat);
    }
}

TEST_F(GrabberDevicesTest, PrefersFluencyThenSizeThenRawPixels) {
    using L = VideoForm::Layout;
    const std::pair<const char*, std::vector<VideoOffer>> rows[] = {
        // the first is the best
        {"fluent", {{L::yuyv, 1280, 720, 30}, {L::yuyv, 1920, 1080, 10}}},
        {"size", {{L::mjpeg, 1920, 1080, 30}, {L::yuyv, 1280, 720, 60}}},
        {"no larger than useful", {{L::nv12, 1920, 1080, 30}, {L::nv12, 7680, 4320, 30}}},
        {"raw", {{L::nv12, 1920, 1080, 25}, {L::mjpeg, 1920, 1080, 60}}},
        {"fluent JPEG", {{L::mjpeg, 1920, 1080, 30}, {L::yuyv, 1920, 1080, 20}}},
        {"calm", {{L::yuyv, 1920, 1080, 30}, {L::yuyv, 1920, 1080, 60}}},
    };
    for (const auto& [name, row] : rows) {
        EXPECT_EQ(bestOffer(row), row.front()) << name;
        EXPECT_EQ(bestOffer(std::vector{row.back(), row.front()}), row.front())
            << name << ", the other way";
    }
    EXPECT_EQ(bestOffer({}), std::nullopt);
}

TEST_F(GrabberDevicesTest, TakesOnlyWhatTheOwnerChose) {
    grabbers_.plugIn("/dev/video0", kCheap, "pci-usb-0:1");
    grabbers_.plugIn("/dev/video1", kMetadata, "pci-usb-0:1");
    grabbers_.plugIn("/dev/video2", kNv12, "pci-usb-0:2");
    grabbers_.plugIn("/dev/video3", kSmall, "port-3");
    grabbers_.plugIn("/dev/video4", kSmall, "port-4");
    start("");
    const std::tuple<const char*, std::vector<std::string>, std::vector<std::string>> rows[] = {
        {"",
         {},
         {"Cable: say which grabber shows the iPhone: tandrel-app --set grabber NAME (there is "
          "\"USB Video: USB Video\", \"UVC Camera HDMI\", \"Small\", \"Small\")"}},
        {" usb video: usb video ", {"grabber-1"}, {}},
        {"pci-usb-0:2", {"grabber-2"}, {}},
        {"/dev/video0,UVC Camera HDMI, /dev/video2", {"grabber-1", "grabber-2"}, {}},
        {"Elsewhere", {}, {"Cable: the chosen grabber \"Elsewhere\" is not plugged in"}},
        {"Small",
         {},
         {"Cable: 2 grabbers are called \"Small\": choose one by its port, \"port-3\", "
          "\"port-4\""}},
    };
    for (const auto& [chosen, ids, troubles] : rows) {
        SCOPED_TRACE(chosen);
        choose(chosen);
        EXPECT_EQ(awaitIds(ids), ids);
        EXPECT_TRUE(eventually([&] { return devices_->troubles() == troubles; }))
            << testing::PrintToString(devices_->troubles());
    }
    start(std::nullopt);  // the picture comes another way
    EXPECT_THAT(awaitIds({}), IsEmpty());
    EXPECT_THAT(devices_->troubles(), IsEmpty());
}

TEST_F(GrabberDevicesTest, FollowsPluggingAndUnplugging) {
    start();
    for (const char* id : {"grabber-1", "grabber-2"}) {  // it may be another phone
        EXPECT_THAT(awaitIds({}), IsEmpty());
        grabbers_.plugIn(kPath, kCheap);
        EXPECT_THAT(awaitIds({id}), ElementsAre(id));
        grabbers_.unplug(kPath);
    }
}

TEST_F(GrabberDevicesTest, OneThatFailsIsAnotherScreenWhenItIsBack) {
    using Device = FakeGrabbers::Device;
    const struct {
        const char* why;
        Duration passes;
        void (*fails)(Device&);
        int times = 1;
    } rows[] = {
        {"it was unplugged", 0ms, [](Device& device) { device.works = false; }},
        {"its signal has changed", 0ms, [](Device& device) { device.hasOtherSignal = true; }},
        {"it sends no picture any more", VideoStream::kLongestSilence + 1ms,
         [](Device& device) { device.isWaitOver = true; }},
        {"the grabber sent a frame of 3 bytes, where 64 x 48 takes 6144", 0ms,
         [](Device& device) { device.frames.push_back({{1, 2, 3}}); }, VideoStream::kMostDamaged},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        const auto session = showSmall();
        clock_.advance(row.passes);
        for (int i = 0; i < row.times; ++i) {
            EXPECT_TRUE(grabbers_.awaitTaken(kPath));
            grabbers_.with(kPath, row.fails);
        }
        EXPECT_THAT(awaitIds({}), IsEmpty());
        EXPECT_THAT(devices_->troubles(), ElementsAre(std::string("Cable: \"Small\": ") + row.why));
        clock_.advance(GrabberDevices::kShortestBackOff);
        grabbers_.poke();
        EXPECT_THAT(awaitIds({"grabber-2"}), ElementsAre("grabber-2"));
        EXPECT_THAT(devices_->troubles(), IsEmpty());
    }
}

TEST_F(GrabberDevicesTest, ShowsTheNextWholeFrameAfterADamagedOne) {
    const auto session = showSmall();
    grabbers_.deliver(kPath, Bytes(100));
    grabbers_.with(kPath, [this](auto& device) { device.frames.push_back({small_, true}); });
    grabbers_.deliver(kPath, {});
    EXPECT_TRUE(grabbers_.awaitTaken(kPath));
    grabbers_.deliver(kPath, Bytes(small_.size() + 512, 128));
    EXPECT_EQ(frames_.next(), Size(64, 48));
    EXPECT_TRUE(frames_.isEmpty());
}

TEST_F(GrabberDevicesTest, TriesLaterEachTimeWhileItCannotBeOpened) {
    GrabberAnswers busy = kSmall;
    busy.streamError = EBUSY;
    grabbers_.plugIn(kPath, busy);
    start("Small");
    Duration wait = GrabberDevices::kShortestBackOff;
    for (int i = 1; i <= 8; ++i) {
        const auto id = fmt::format("grabber-{}", i);
        ASSERT_THAT(awaitIds({id}), ElementsAre(id));
        EXPECT_EQ(openError(), "/dev/video0 is in use by another program: close it");
        EXPECT_THAT(awaitIds({}), IsEmpty());
        clock_.advance(wait - 1ms);
        grabbers_.poke();
        EXPECT_THAT(devices_->devices(), IsEmpty()) << "too early";
        clock_.advance(1ms);
        grabbers_.poke();
        wait = std::min(wait * 2, GrabberDevices::kLongestBackOff);
    }
    EXPECT_EQ(grabbers_.openCount(), 0);
}

TEST_F(GrabberDevicesTest, SaysWhyADeviceGivesNoFrames) {
    const std::tuple<const char*, std::function<void(GrabberAnswers&)>, const char*> rows[] = {
        {"nothing known", [](auto& a) { a.formats = {{V4L2_PIX_FMT_H264, {{64, 48, {30}}}}}; },
         "/dev/video0 offers no video in YUYV, NV12, BGR or MJPEG"},
        {"impossible sizes",
         [](auto& a) { a.formats = {{V4L2_PIX_FMT_YUYV, {{0, 48, {30}}, {64, 0xffffffff, {}}}}}; },
         "/dev/video0 offers no video in YUYV, NV12, BGR or MJPEG"},
        {"something else", [](auto& a) { a.settlesFor = V4L2_PIX_FMT_H264; },
         "/dev/video0 does not deliver what it offers"},
        {"no buffers", [](auto& a) { a.buffers = 0; }, "it gave 0 buffers"},
        {"too many buffers", [](auto& a) { a.buffers = 100'000; }, "it gave 100000 buffers"},
    };
    for (const auto& [name, change, error] : rows) {
        GrabberAnswers answers = kSmall;
        change(answers);
        grabbers_.plugIn(kPath, answers);
        start("Small");
        EXPECT_EQ(openError(), error) << name;
        EXPECT_EQ(grabbers_.openCount(), 0) << name;
    }
}

TEST_F(GrabberDevicesTest, NamesTheCommandThatGivesAccess) {
    GrabberAnswers locked = kSmall;
    locked.openError = EACCES;
    grabbers_.plugIn(kPath, locked);
    start(kPath);
    EXPECT_THAT(awaitIds({}), IsEmpty());
    EXPECT_THAT(devices_->troubles(), ElementsAre(HasSubstr("sudo usermod -aG video $USER")));
    grabbers_.plugIn(kPath, kSmall);
    EXPECT_THAT(awaitIds({"grabber-1"}), ElementsAre("grabber-1")) << "once its rights are set";
}

TEST_F(GrabberDevicesTest, EndsAtOnceWhileItWaitsForFrames) {
    auto session = showSmall();
    session.reset();
    EXPECT_EQ(grabbers_.openCount(), 0);
    grabbers_.deliver(kPath, small_);
    EXPECT_TRUE(frames_.isEmpty());
    devices_->setOnDevicesChanged({});
    devices_.reset();
}

}  // namespace
}  // namespace tandrel
