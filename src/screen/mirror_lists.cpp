#include "screen/mirror_tools.h"
#include "screen/screen_capture.h"
#include "screen/window_search.h"

namespace tandrel::tools {
namespace {

// {key: true}, or false and the reason.
Json answer(const char* key, const Result<void>& allowed) {
    Json json = {{key, allowed.has_value()}};
    if (!allowed) json["reason"] = allowed.error().message;
    return json;
}

Result<void> mayDrive(MirrorServices& services) {
    TRY(services.openInput());
    return {};
}

}  // namespace

Result<Json> find(const MirrorArgs& args, MirrorServices& services) {
    const MirrorPlatform platform = TRY(services.openPlatform());
    const auto window = TRY(findWindow(platform.windows, args.size() > 1 ? args[1] : ""));
    if (!window) return fail(kNoMirroringApp);
    return window->json();
}

Result<Json> usbList(const MirrorArgs&, MirrorServices& services) {
    const MirrorPlatform platform = TRY(services.openPlatform());
    platform.capture.allowScreenCaptureDevices();
    Json list = Json::array();
    for (const CaptureDeviceInfo& device : iPhoneCaptureDevices(platform.capture)) {
        list.push_back({{"id", device.id}, {"name", device.name}, {"model", device.modelId}});
    }
    return list;
}

Result<Json> airplayList(const MirrorArgs&, MirrorServices& services) {
    const MirrorPlatform platform = TRY(services.openPlatform());
    Json list = Json::array();
    for (const WinInfo& window : TRY(airplayCandidates(platform.windows))) {
        list.push_back(window.json());
    }
    return list;
}

Result<Json> trusted(const MirrorArgs&, MirrorServices& services) {
    return Json{{"trusted", mayDrive(services).has_value()}};
}

Result<Json> accessibility(const MirrorArgs&, MirrorServices& services) {
    return answer("accessibility", mayDrive(services));
}

Result<Json> screen(const MirrorArgs&, MirrorServices& services) {
    const MirrorPlatform platform = TRY(services.openPlatform());
    Result<void> allowed;
    if (const auto windows = platform.windows.all(); !windows) {
        allowed = std::unexpected(windows.error());
    } else if (platform.permissions.screenRecording() != Permission::granted) {
        allowed = fail("recording the screen is not allowed");
    }
    return answer("screen", allowed);
}

Result<Json> camera(const MirrorArgs&, MirrorServices& services) {
    const MirrorPlatform platform = TRY(services.openPlatform());
    const bool isAllowed = platform.permissions.camera() == Permission::granted;
    return answer("camera", isAllowed ? Result<void>()
                                      : fail("no video device may be opened: add yourself to the "
                                             "group \"video\" and log in again"));
}

}  // namespace tandrel::tools
