#include "platform/linux/grabber_devices.h"

#include <cerrno>
#include <condition_variable>
#include <deque>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/videodev2.h>

#include "image/jpeg_writer.h"
#include "platform/linux/fake_grabber.h"
#include "platform/linux/video_offer.h"
#include "platform/linux/video_stream.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uint32_t kVideo = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
constexpr const char* kPath = "/dev/video0";
constexpr const char* kCard = "USB Video: USB Video";

// The cheap one with USB 2: raw pictures only a few times a second.
GrabberAnswers cheapGrabber() {
    return {.card = kCard,
            .capabilities = kVideo,
            .formats = {{V4L2_PIX_FMT_MJPEG, {{1920, 1080, {60, 50, 30}}, {720, 480, {60, 30}}}},
                        {V4L2_PIX_FMT_YUYV, {{1920, 1080, {5}}, {720, 480, {30}}}}}};
}
GrabberAnswers nv12Grabber() {
    return {.card = "UVC Camera HDMI",
            .capabilities = kVideo,
            .formats = {{V4L2_PIX_FMT_MJPEG, {{3840, 2160, {30}}, {1920, 1080, {60}}}},
                        {V4L2_PIX_FMT_NV12, {{3840, 2160, {30}}, {1920, 1080, {60}}}},
                        {V4L2_PIX_FMT_YUYV, {{3840, 2160, {15}}}}}};
}
GrabberAnswers bgrCard() {
    return {.card = "PCIe card", .capabilities = kVideo, .formats = {{V4L2_PIX_FMT_BGR24, {}}}};
}
GrabberAnswers smallGrabber() {
    return {.card = "Small",
            .capabilities = kVideo,
            .formats = {{V4L2_PIX_FMT_YUYV, {{64, 48, {30}}}}}};
}
GrabberAnswers metadataNode() {
    return {.card = kCard, .capabilities = V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING};
}

Bytes jpegOf(int width, int height) {
    const auto grey = PixelBuffer::make(width, height, nullptr);
    return *withPixels(grey, [](const Pixels& pixels) { return encodeJpeg(pixels, 80); });
}

class NodesOf final : public VideoNodes {
 public:
    explicit NodesOf(FakeGrabbers& grabbers) : grabbers_(grabbers) {}
    std::vector<VideoNode> list() override { return grabbers_.list(); }
    void awaitChange(int wake, Duration longest) override { grabbers_.awaitChange(wake, longest); }

 private:
    FakeGrabbers& grabbers_;
};

class GrabberDevicesTest : public testing::Test {
 protected:
    using Size = std::pair<int, int>;

    void start(const std::optional<std::string>& chosen = kCard) {
        chosen_ = chosen;
        devices_ = std::make_unique<GrabberDevices>(
            GrabberDevices::Options{.nodes = std::make_unique<NodesOf>(grabbers_),
                                    .chosen =
                                        [this] {
                                            std::lock_guard lock(mutex_);
                                            return chosen_;
                                        }},
            grabbers_, clock_);
        devices_->setOnDevicesChanged([this] {
            std::lock_guard lock(mutex_);
            event_.notify_all();
        });
        devices_->devices();  // the first look is over
    }
    void choose(const std::string& chosen) {
        {
            std::lock_guard lock(mutex_);
            chosen_ = chosen;
        }
        grabbers_.poke();
    }
    std::vector<std::string> ids() {
        std::vector<std::string> ids;
        for (const auto& device : devices_->devices()) ids.push_back(device.id);
        return ids;
    }
    // Waits until the devices are these; says what they were at last.
    std::vector<std::string> awaitIds(const std::vector<std::string>& wanted) {
        std::unique_lock lock(mutex_);
        std::vector<std::string> now;
        event_.wait_for(lock, 10s, [&] { return (now = ids()) == wanted; });
        return now;
    }
    std::unique_ptr<CaptureSession> open() {
        auto session = devices_->open(devices_->devices().at(0), [this](const PixelBuffer& frame) {
            std::lock_guard lock(mutex_);
            pictures_.emplace_back(frame.width(), frame.height());
            event_.notify_all();
        });
        if (!session) ADD_FAILURE() << session.error().message;
        return session ? *std::move(session) : nullptr;
    }
    std::string openError() {
        const auto session = devices_->open(devices_->devices().at(0), [](const PixelBuffer&) {});
        return session ? "opened" : session.error().message;
    }
    // The size of the next picture; 0 x 0 when none comes.
    Size next() {
        std::unique_lock lock(mutex_);
        if (!event_.wait_for(lock, 10s, [this] { return !pictures_.empty(); })) return {0, 0};
        const Size size = pictures_.front();
        pictures_.pop_front();
        return size;
    }
    // The small grabber streams and has shown a picture.
    std::unique_ptr<CaptureSession> showSmall() {
        grabbers_.plugIn(kPath, smallGrabber());
        start("Small");
        auto session = open();
        grabbers_.deliver(kPath, small_);
        EXPECT_EQ(next(), Size(64, 48));
        return session;
    }

    FakeGrabbers grabbers_;
    ManualClock clock_;
    const Bytes small_ = Bytes(64 * 48 * 2, 128);
    std::mutex mutex_;
    std::condition_variable event_;
    std::optional<std::string> chosen_;
    std::deque<Size> pictures_;
    std::unique_ptr<GrabberDevices> devices_;
};

TEST_F(GrabberDevicesTest, TakesFromEachGrabberTheFormThatShowsAPhoneBest) {
    GrabberAnswers padded = nv12Grabber();
    padded.bytesPerLine = 4096;
    GrabberAnswers settled = cheapGrabber();
    settled.settlesFor = V4L2_PIX_FMT_YUYV;
    struct Row {
        const char* name;
        GrabberAnswers answers;
        Bytes frame;
        std::uint32_t pixelFormat;
        Size size;
    };
    const Row rows[] = {
        {"cheap", cheapGrabber(), jpegOf(1920, 1080), V4L2_PIX_FMT_MJPEG, {1920, 1080}},
        {"NV12", nv12Grabber(), Bytes(3840 * 2160 * 3 / 2), V4L2_PIX_FMT_NV12, {3840, 2160}},
        {"NV12, padded", padded, Bytes(4096 * 2160 * 3 / 2), V4L2_PIX_FMT_NV12, {3840, 2160}},
        {"BGR, no sizes", bgrCard(), Bytes(1920 * 1080 * 3), V4L2_PIX_FMT_BGR24, {1920, 1080}},
        {"other than asked", settled, Bytes(1920 * 1080 * 2), V4L2_PIX_FMT_YUYV, {1920, 1080}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        grabbers_.plugIn(kPath, row.answers);
        start(row.answers.card);
        const auto session = open();
        ASSERT_TRUE(session);
        grabbers_.deliver(kPath, row.frame);
        EXPECT_EQ(next(), row.size);
        EXPECT_EQ(grabbers_.pixelFormat(kPath), row.pixelFormat);
    }
}

TEST_F(GrabberDevicesTest, PrefersFluencyThenSizeThenRawPixels) {
    using L = VideoForm::Layout;
    struct Row {
        const char* name;
        std::vector<VideoOffer> offers;  // the first is the best
    };
    const Row rows[] = {
        {"fluent", {{L::yuyv, 1280, 720, 30}, {L::yuyv, 1920, 1080, 10}}},
        {"size", {{L::mjpeg, 1920, 1080, 30}, {L::yuyv, 1280, 720, 60}}},
        {"no larger than useful", {{L::nv12, 1920, 1080, 30}, {L::nv12, 7680, 4320, 30}}},
        {"raw", {{L::nv12, 1920, 1080, 25}, {L::mjpeg, 1920, 1080, 60}}},
        {"fluent JPEG", {{L::mjpeg, 1920, 1080, 30}, {L::yuyv, 1920, 1080, 20}}},
        {"calm", {{L::yuyv, 1920, 1080, 30}, {L::yuyv, 1920, 1080, 60}}},
    };
    for (const Row& row : rows) {
        auto offers = row.offers;
        EXPECT_EQ(bestOffer(offers), row.offers.front()) << row.name;
        std::swap(offers.front(), offers.back());
        EXPECT_EQ(bestOffer(offers), row.offers.front()) << row.name << ", the other way round";
    }
    EXPECT_EQ(bestOffer({}), std::nullopt);
}

TEST_F(GrabberDevicesTest, TakesOnlyWhatTheOwnerChose) {
    grabbers_.plugIn("/dev/video0", cheapGrabber(), "pci-usb-0:1");
    grabbers_.plugIn("/dev/video1", metadataNode(), "pci-usb-0:1");
    grabbers_.plugIn("/dev/video2", nv12Grabber(), "pci-usb-0:2");
    start("");
    EXPECT_THAT(ids(), IsEmpty());
    EXPECT_THAT(devices_->troubles(),
                ElementsAre("Cable: say which grabber shows the iPhone: tandrel-app --set grabber "
                            "NAME (there is \"USB Video: USB Video\", \"UVC Camera HDMI\")"));
    choose(" usb video: usb video ");
    EXPECT_THAT(awaitIds({"grabber-1"}), ElementsAre("grabber-1"));
    EXPECT_THAT(devices_->troubles(), IsEmpty());
    choose("pci-usb-0:2");
    EXPECT_THAT(awaitIds({"grabber-2"}), ElementsAre("grabber-2"));
    choose("/dev/video0,UVC Camera HDMI, /dev/video2");
    EXPECT_THAT(awaitIds({"grabber-1", "grabber-2"}), ElementsAre("grabber-1", "grabber-2"));
    choose("Elsewhere");
    EXPECT_THAT(awaitIds({}), IsEmpty());
    EXPECT_THAT(devices_->troubles(),
                ElementsAre("Cable: the chosen grabber \"Elsewhere\" is not plugged in"));
}

TEST_F(GrabberDevicesTest, DoesNotGuessAmongTwoOfTheSameName) {
    grabbers_.plugIn("/dev/video0", cheapGrabber(), "port-1");
    grabbers_.plugIn("/dev/video2", cheapGrabber(), "port-2");
    start();
    EXPECT_THAT(ids(), IsEmpty());
    EXPECT_THAT(devices_->troubles(),
                ElementsAre("Cable: 2 grabbers are called \"USB Video: USB Video\": choose one by "
                            "its port, \"port-1\", \"port-2\""));
}

TEST_F(GrabberDevicesTest, SaysNothingWhereThePictureComesAnotherWay) {
    start(std::nullopt);
    EXPECT_THAT(ids(), IsEmpty());
    EXPECT_THAT(devices_->troubles(), IsEmpty());
}

TEST_F(GrabberDevicesTest, FollowsPluggingAndUnplugging) {
    start();
    EXPECT_THAT(ids(), IsEmpty());
    grabbers_.plugIn(kPath, cheapGrabber());
    EXPECT_THAT(awaitIds({"grabber-1"}), ElementsAre("grabber-1"));
    grabbers_.unplug(kPath);
    EXPECT_THAT(awaitIds({}), IsEmpty());
    grabbers_.plugIn(kPath, cheapGrabber());
    EXPECT_THAT(awaitIds({"grabber-2"}), ElementsAre("grabber-2")) << "may be another phone";
}

TEST_F(GrabberDevicesTest, OneThatFailsIsAnotherScreenWhenItIsBack) {
    struct Row {
        const char* name;
        std::function<void()> fails;
        const char* why;
    };
    const Row rows[] = {
        {"vanishes inside a read", [this] { grabbers_.breakDown(kPath); }, "it was unplugged"},
        {"other signal", [this] { grabbers_.changeSignal(kPath); }, "its signal has changed"},
        {"falls silent",
         [this] {
             clock_.advance(VideoStream::kLongestSilence + 1ms);
             grabbers_.endWait(kPath);
         },
         "it sends no picture any more"},
        {"sends nothing whole",
         [this] {
             for (int i = 0; i < VideoStream::kMostDamaged; ++i) {
                 grabbers_.deliver(kPath, {1, 2, 3});
                 EXPECT_TRUE(grabbers_.awaitTaken(kPath)) << i;
             }
         },
         "the grabber sent a frame of 3 bytes, where 64 x 48 takes 6144"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto session = showSmall();
        row.fails();
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
    grabbers_.deliver(kPath, small_, FakeGrabbers::Quality::damaged);
    grabbers_.deliver(kPath, {});
    EXPECT_TRUE(grabbers_.awaitTaken(kPath));
    grabbers_.deliver(kPath, Bytes(small_.size() + 512, 128));
    EXPECT_EQ(next(), Size(64, 48));
    EXPECT_TRUE(pictures_.empty());
}

TEST_F(GrabberDevicesTest, TriesLaterEachTimeWhileItCannotBeOpened) {
    GrabberAnswers busy = smallGrabber();
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
        EXPECT_THAT(ids(), IsEmpty()) << "too early";
        clock_.advance(1ms);
        grabbers_.poke();
        wait = std::min(wait * 2, GrabberDevices::kLongestBackOff);
    }
    EXPECT_EQ(grabbers_.openCount(), 0);
}

TEST_F(GrabberDevicesTest, SaysWhyADeviceGivesNoFrames) {
    struct Row {
        const char* name;
        std::function<void(GrabberAnswers&)> change;
        const char* error;
    };
    const Row rows[] = {
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
    for (const Row& row : rows) {
        GrabberAnswers answers = smallGrabber();
        row.change(answers);
        grabbers_.plugIn(kPath, answers);
        start("Small");
        EXPECT_EQ(openError(), row.error) << row.name;
        EXPECT_EQ(grabbers_.openCount(), 0) << row.name;
    }
}

TEST_F(GrabberDevicesTest, NamesTheCommandThatGivesAccess) {
    GrabberAnswers locked = smallGrabber();
    locked.openError = EACCES;
    grabbers_.plugIn(kPath, locked);
    start(kPath);
    EXPECT_THAT(ids(), IsEmpty());
    EXPECT_THAT(devices_->troubles(), ElementsAre(HasSubstr("sudo usermod -aG video $USER")));
    grabbers_.plugIn(kPath, smallGrabber());
    EXPECT_THAT(awaitIds({"grabber-1"}), ElementsAre("grabber-1")) << "once its rights are set";
}

TEST_F(GrabberDevicesTest, EndsAtOnceWhileItWaitsForFrames) {
    auto session = showSmall();
    session.reset();
    EXPECT_EQ(grabbers_.openCount(), 0);
    grabbers_.deliver(kPath, small_);
    EXPECT_TRUE(pictures_.empty());
    devices_->setOnDevicesChanged({});
    devices_.reset();
}

}  // namespace
}  // namespace tandrel
