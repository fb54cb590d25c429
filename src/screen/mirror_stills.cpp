#include "screen/mirror_stills.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>

#include "base/bytes.h"
#include "base/file.h"
#include "base/unicode.h"
#include "image/image_reader.h"
#include "screen/mirror_tools.h"
#include "screen/recognize.h"
#include "screen/screen_capture.h"
#include "screen/window_capture.h"
#include "screen/window_search.h"

namespace tandrel {
namespace {

constexpr Duration kBetweenLooks = std::chrono::milliseconds(50);
constexpr double kUnlimited = 100'000;  // pixels
constexpr double kPatienceSeconds = 8;
constexpr double kLongestPatience = 3600;
constexpr const char* kNoPhone =
    "no iPhone screen found over USB: plug it in with a data cable, unlock it and tap Trust (then "
    "retry)";
constexpr const char* kNoCamera =
    "camera access denied: allow it for your terminal app in System Settings › Privacy & Security "
    "› Camera";
constexpr const char* kNoAirplayWindow =
    "no AirPlay mirroring window: on the iPhone open Control Center › Screen Mirroring › choose "
    "this Mac";

Result<double> patience(const MirrorArgs& args) {
    return numberOption(args, "--timeout", kPatienceSeconds, 0, kLongestPatience);
}

// A file is replaced whole, so that a full disk costs nobody the old one; a device or a pipe is
// written into.
Result<void> write(const std::string& path, const Bytes& bytes) {
    namespace fs = std::filesystem;
    std::error_code error;
    const auto kind = fs::status(path, error).type();
    bool isWritten = false;
    if (kind == fs::file_type::regular || kind == fs::file_type::not_found) {
        const fs::path folder = fs::path(path).parent_path();
        const bool hasFolder = folder.empty() || fs::is_directory(folder, error);
        isWritten = hasFolder && !path.empty() && replaceFile(path, toText(bytes));
    } else if (kind != fs::file_type::directory) {
        std::ofstream device(path, std::ios::binary);
        device.write(reinterpret_cast<const char*>(bytes.data()),
                     static_cast<std::streamsize>(bytes.size()));
        device.close();
        isWritten = !device.fail();
    }
    if (!isWritten) return fail("cannot write " + path);
    return {};
}

// Scales the frame, saves it under the tool's operand and says what was saved.
Result<Json> save(const PixelBuffer& frame, double ageSeconds, const MirrorArgs& args,
                  MirrorServices& services) {
    const std::string& path = args[1];
    const double most = TRY(numberOption(args, "--max", kUnlimited, 1, kUnlimited));
    const PixelBuffer picture = scaledPicture(frame, {}, static_cast<int>(most));
    if (!picture) return fail("cannot scale frame");
    const bool isPng = lowerCased(path).ends_with(".png");
    const auto bytes =
        encodeSnapshot(picture, {.format = isPng ? ImageFormat::png : ImageFormat::jpeg});
    if (!bytes) return fail("cannot render frame");
    Json result = {{"path", path},
                   {"w", picture.width()},
                   {"h", picture.height()},
                   {"age_ms", std::round(ageSeconds * 1000)}};
    if (hasFlag(args, "--ocr")) {
        const auto recognizer = TRY(services.makeRecognizer());
        const ReadText text = TRY(readText(*recognizer, picture));
        result["ocr"] = toJson(text.records);
    }
    TRY_VOID(write(path, *bytes));
    return result;
}

Result<Screen::Latest> awaitFrame(Screen& screen, const MirrorPlatform& platform,
                                  TimePoint deadline) {
    while (true) {
        if (auto latest = screen.latest()) return *std::move(latest);
        const bool isOver = platform.clock.now() >= deadline;
        if (isOver || !platform.clock.sleepFor(kBetweenLooks, platform.stopping)) {
            return fail("no frame yet from " + screen.name() + " (is the iPhone unlocked?)");
        }
    }
}

}  // namespace

Result<CaptureDeviceInfo> findIPhone(const MirrorArgs& args, const MirrorPlatform& platform) {
    if (platform.permissions.camera() == Permission::denied) return fail(kNoCamera);
    const std::string wanted = lowerCased(option(args, "--device").value_or(""));
    const TimePoint deadline = platform.clock.now() + seconds(TRY(patience(args)));
    platform.capture.allowScreenCaptureDevices();
    while (true) {
        for (const CaptureDeviceInfo& device : iPhoneCaptureDevices(platform.capture)) {
            const bool isWanted = wanted.empty() || lowerCased(device.id) == wanted ||
                                  lowerCased(device.name) == wanted;
            if (isWanted) return device;
        }
        const bool isOver = platform.clock.now() >= deadline;
        if (isOver || !platform.clock.sleepFor(kBetweenLooks, platform.stopping)) {
            return fail(kNoPhone);
        }
    }
}

namespace tools {

Result<Json> usbCapture(const MirrorArgs& args, MirrorServices& services) {
    if (const auto path = option(args, "--image")) {
        const auto image = readImage(*path);
        return image ? save(*image, 0, args, services) : fail("cannot read " + *path);
    }
    const MirrorPlatform platform = TRY(services.openPlatform());
    const TimePoint deadline = platform.clock.now() + seconds(TRY(patience(args)));
    const CaptureDeviceInfo device = TRY(findIPhone(args, platform));
    const auto screen = Screen::open(platform.capture, device, platform.clock);
    if (!screen) return std::unexpected(CaptureError::cannotCapture(device.name));
    const Screen::Latest latest = TRY(awaitFrame(**screen, platform, deadline));
    return save(latest.frame, latest.ageSeconds, args, services);
}

Result<Json> airplayCapture(const MirrorArgs& args, MirrorServices& services) {
    const auto id = TRY(windowOption(args));
    const MirrorPlatform platform = TRY(services.openPlatform());
    auto window = pickWindow(platform.windows, id);
    if (!window && window.error().message == kNoMirroringWindow) return fail(kNoAirplayWindow);
    if (!window) return std::unexpected(window.error());
    WindowCapture capture(platform.windows, *std::move(window), platform.clock);
    TRY_VOID(capture.start());
    const auto latest = TRY(capture.awaitLatest(seconds(kPatienceSeconds), platform.stopping));
    const ContentRect content = capture.content(latest.frame);
    const bool isWhole = hasFlag(args, "--no-crop");
    const PixelBuffer picture = isWhole ? latest.frame : cropped(latest.frame, content.rect);
    Json result = TRY(save(picture, latest.ageSeconds, args, services));
    result["window"] = capture.info().json();
    result["content"] = content.json();
    return result;
}

}  // namespace tools
}  // namespace tandrel
