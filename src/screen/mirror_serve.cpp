#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <ostream>

#include <fmt/format.h>

#include "image/image_reader.h"
#include "screen/airplay_http.h"
#include "screen/airplay_server.h"
#include "screen/device_window.h"
#include "screen/mirror_stills.h"
#include "screen/mirror_tools.h"
#include "screen/window_search.h"

namespace tandrel {
namespace {

constexpr const char* kName = "tandrel-mirror";
constexpr double kAirplayPort = 7391;
constexpr double kUsbPort = 7392;
constexpr Duration kKeepAliveInterval = std::chrono::milliseconds(1500);

// A still image in the place of a phone's screen.
class StillDevice final : public CaptureDevices {
 public:
    explicit StillDevice(PixelBuffer image) : image_(std::move(image)) {}
    void allowScreenCaptureDevices() override {}
    std::vector<CaptureDeviceInfo> devices() override { return {}; }
    void setOnDevicesChanged(std::function<void()>) override {}
    void requestAccess(std::function<void(bool granted)> answer) override { answer(true); }
    Result<std::unique_ptr<CaptureSession>> open(const CaptureDeviceInfo&,
                                                 FrameSink sink) override {
        sink(image_);
        return std::make_unique<CaptureSession>();
    }

 private:
    const PixelBuffer image_;
};

// Waits until the person or "/quit" ends the tool.
class End {
 public:
    void come() {
        {
            std::lock_guard lock(mutex_);
            hasCome_ = true;
        }
        changed_.notify_all();
    }
    // False once it has come.
    bool awaitFor(Duration time, const std::stop_token& stop) {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, stop, time, [this] { return hasCome_; });
        return !hasCome_ && !stop.stop_requested();
    }

 private:
    std::mutex mutex_;
    std::condition_variable_any changed_;
    bool hasCome_ = false;
};

// Serves until the end; the reply to "/quit" is out before the server stops.
Result<Json> serve(AirPlayServer& server, const MirrorPlatform& platform, std::uint16_t port,
                   const std::function<void(std::uint16_t port)>& started,
                   const std::function<void()>& keepAlive) {
    End end;
    const auto handle = [&](const HTTPRequest& request) {
        if (request.path != "/quit") return server.handle(request);
        end.come();
        return HTTPResponse::json({{"ok", true}});
    };
    const auto http = TRY(serveHTTP(port, handle, platform.peers));
    started(http->port());
    while (end.awaitFor(kKeepAliveInterval, platform.stopping)) keepAlive();
    http->stop();
    server.stop();
    return Json{{"ok", true}, {"port", http->port()}};
}

Result<std::uint16_t> portOption(const MirrorArgs& args, double fallback) {
    return static_cast<std::uint16_t>(TRY(numberOption(args, "--port", fallback, 0, 65535)));
}

std::function<bool()> mayRecord(const MirrorPlatform& platform) {
    return [&platform] { return platform.permissions.screenRecording() == Permission::granted; };
}

double quantile(std::vector<double> values, double share) {
    if (values.empty()) return 0;
    std::ranges::sort(values);
    const auto at = static_cast<std::size_t>(share * static_cast<double>(values.size() - 1));
    return std::round(values[at] * 100) / 100;
}

// `times`: when each frame came, in milliseconds since the start.
Json deliveryJson(const std::vector<double>& times, double secondsLong) {
    std::vector<double> intervals;
    for (std::size_t i = 1; i < times.size(); ++i) intervals.push_back(times[i] - times[i - 1]);
    Json json = {{"seconds", secondsLong},
                 {"frames", times.size()},
                 {"fps", std::round(10 * double(times.size()) / secondsLong) / 10},
                 {"interval_ms",
                  {{"median", quantile(intervals, 0.5)}, {"p95", quantile(intervals, 0.95)}}}};
    if (!times.empty()) json["first_frame_ms"] = std::round(times.front() * 100) / 100;
    return json;
}

}  // namespace

namespace tools {

Result<Json> airplayServe(const MirrorArgs& args, MirrorServices& services) {
    const std::uint16_t port = TRY(portOption(args, kAirplayPort));
    const auto window = TRY(windowOption(args));
    const MirrorPlatform platform = TRY(services.openPlatform());
    const auto recognizer = TRY(services.makeRecognizer());
    const bool receives = hasFlag(args, "--receive") && platform.receiver != nullptr;
    AirPlayServer server({.windows = platform.windows,
                          .receiver = receives ? platform.receiver : nullptr,
                          .recognizer = *recognizer,
                          .clock = platform.clock,
                          .mayRecord = mayRecord(platform),
                          .app = kName,
                          .version = platform.version},
                         window);
    const auto started = [&](std::uint16_t own) {
        services.err << fmt::format("{} airplay-serve on 127.0.0.1:{} (screen recording: {})\n",
                                    kName, own, mayRecord(platform)())
                     << std::flush;
    };
    auto result = serve(server, platform, port, started, [&] {
        if (receives) server.keepAlive();
    });
    if (receives) platform.receiver->stop();
    return result;
}

Result<Json> usbServe(const MirrorArgs& args, MirrorServices& services) {
    const std::uint16_t port = TRY(portOption(args, kUsbPort));
    const MirrorPlatform platform = TRY(services.openPlatform());
    const auto recognizer = TRY(services.makeRecognizer());
    std::unique_ptr<StillDevice> still;
    CaptureDeviceInfo device;
    if (const auto path = option(args, "--image")) {
        auto image = readImage(*path);
        if (!image) return fail("cannot read " + *path);
        still = std::make_unique<StillDevice>(*std::move(image));
        device.name = *path;
    } else {
        device = TRY(findIPhone(args, platform));
    }
    CaptureDevices& devices = still ? static_cast<CaptureDevices&>(*still) : platform.capture;
    DeviceWindow window(devices, device);
    AirPlayServer server({.windows = window,
                          .receiver = nullptr,
                          .recognizer = *recognizer,
                          .clock = platform.clock,
                          .mayRecord = mayRecord(platform),
                          .app = kName,
                          .version = platform.version},
                         DeviceWindow::kId);
    const auto started = [&](std::uint16_t own) {
        services.err << fmt::format("{} usb-serve on 127.0.0.1:{} ({})\n", kName, own, device.name)
                     << std::flush;
    };
    return serve(server, platform, port, started, [] {});
}

Result<Json> captureLatency(const MirrorArgs& args, MirrorServices& services) {
    constexpr double kSeconds = 5;
    constexpr double kMostSeconds = 3600;
    const double secondsLong = TRY(numberOption(args, "--seconds", kSeconds, 0.1, kMostSeconds));
    const auto id = TRY(windowOption(args));
    const MirrorPlatform platform = TRY(services.openPlatform());
    WinInfo window = TRY(pickWindow(platform.windows, id));
    WindowCapture capture(platform.windows, std::move(window), platform.clock);
    std::mutex mutex;
    std::vector<double> times;
    const TimePoint start = platform.clock.now();
    TRY_VOID(capture.start());
    capture.setListener([&](const PixelBuffer&) {
        std::lock_guard lock(mutex);
        times.push_back(toSeconds(platform.clock.now() - start) * 1000);
    });
    platform.clock.sleepFor(seconds(secondsLong), platform.stopping);
    capture.setListener({});
    Json result = deliveryJson(times, secondsLong);
    result["window"] = capture.info().json();
    if (const auto trouble = capture.trouble()) result["trouble"] = *trouble;
    return result;
}

}  // namespace tools
}  // namespace tandrel
