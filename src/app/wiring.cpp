#include "app/wiring.h"

#include <fmt/format.h>

#include "base/environment.h"
#include "base/paths.h"
#include "image/image_reader.h"
#include "platform/linux/bluez_peripheral.h"
#include "platform/linux/chosen_languages.h"
#include "platform/linux/grabber_devices.h"
#include "platform/linux/image_capture_devices.h"
#include "platform/linux/linux_permissions.h"
#include "platform/linux/pipe_airplay_receiver.h"
#include "platform/linux/sock_diag_peer_identity.h"
#include "platform/linux/udev_usb_registry.h"
#include "platform/linux/x_windows.h"
#include "platform/virtual/virtual_platform.h"
#include "screen/grabbed_devices.h"
#include "screen/window_sources.h"

namespace tandrel {
namespace {

// The usage that pressing the key of this name or character sends.
std::optional<std::uint8_t> keyUsage(std::string_view key) {
    const auto stroke = Input::keyStroke(key, {});
    if (!stroke) return std::nullopt;
    return stroke->code;
}

// A path that stands for no picture is told at the start, not when the first frame is missing.
Result<void> checkImages(const std::filesystem::path& path) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) return {};
    TRY(readImage(path));
    return {};
}

}  // namespace

Backends::Backends() = default;
Backends::Backends(Backends&&) noexcept = default;
Backends::~Backends() = default;

Result<Backends> Backends::open(const AppInfo& info, Clock& clock) {
    Backends backends;
    const std::string phones = environment("TANDREL_VIRTUAL_PHONE").value_or("");
    if (!phones.empty()) {
        backends.virtualPhones =
            TRY(VirtualPlatform::open(phones, info.bundle / "share/tandrel", clock));
        backends.makeBluetooth = backends.virtualPhones->makeBluetoothPeripheral();
        backends.capture = &backends.virtualPhones->captureDevices();
        backends.windows = &backends.virtualPhones->windows();
        backends.permissions = &backends.virtualPhones->permissions();
        backends.usb = &backends.virtualPhones->usbRegistry();
        return backends;
    }
    BluezOptions bluetooth;
    bluetooth.adapters =
        BluezOptions::parseAdapters(environment("TANDREL_BLUETOOTH_ADAPTERS").value_or(""));
    backends.makeBluetooth = makeBluezPeripheral(bluetooth, clock);
    const auto images =
        ImageCaptureDevices::parsePaths(environment("TANDREL_CAPTURE_IMAGES").value_or(""));
    for (const auto& path : images) TRY_VOID(checkImages(path));
    if (images.empty()) {
        backends.openGrabbers(AppFiles::of(info).settings, clock);
    } else {
        backends.ownCapture = std::make_unique<ImageCaptureDevices>(
            ImageCaptureDevices::Options{.paths = images, .load = readImage}, clock);
        backends.capture = backends.ownCapture.get();
    }
    auto receiver = std::make_unique<PipeAirPlayReceiver>(PipeAirPlayReceiver::Options{
        .program = environment("TANDREL_AIRPLAY_RECEIVER").value_or("uxplay"),
        .name = AppInfo::macName()});
    backends.desktop = std::make_unique<XWindows>();
    backends.ownWindows = std::make_unique<WindowSources>(
        std::vector<Windows*>{receiver.get(), backends.desktop.get()});
    backends.windows = backends.ownWindows.get();
    backends.receiver = std::move(receiver);
    backends.ownPermissions = std::make_unique<LinuxPermissions>();
    backends.permissions = backends.ownPermissions.get();
    backends.ownUsb = std::make_unique<UdevUsbRegistry>();
    backends.usb = backends.ownUsb.get();
    return backends;
}

void Backends::openGrabbers(const std::filesystem::path& settings, Clock& clock) {
    const auto forced = environment("TANDREL_GRABBER");
    const auto defaults = std::make_shared<JsonUserDefaults>(settings, clock);
    const auto chosen = [forced, defaults]() -> std::optional<std::string> {
        const bool none = defaults->textValue("link") == "airplay";
        return forced || none ? forced : defaults->textValue("grabber").value_or("");
    };
    auto grabbers = std::make_unique<GrabberDevices>(
        GrabberDevices::Options{.nodes = makeUdevVideoNodes(), .chosen = chosen},
        systemVideoCalls(), clock);
    absences = [found = grabbers.get()] { return found->troubles(); };
    ownGrabbers = std::move(grabbers);
    ownCapture = std::make_unique<GrabbedDevices>(*ownGrabbers, clock);
    capture = ownCapture.get();
}

AppFiles AppFiles::of(const AppInfo& info) {
    AppFiles files;
    files.settings = configHome() / "tandrel/settings.json";
    files.log = stateHome() / "tandrel/Tandrel.log";
    files.pairings = dataHome() / info.supportFolderName / "pairings.json";
    files.approvals = PaymentLog::location(info.supportFolderName);
    files.engineState = stateHome() / "tandrel/engine.json";
    return files;
}

Wiring::Wiring(Backends backends, AppInfo info, MainLoop& loop, Asker& asker, Clock& clock)
    : backends_(std::move(backends)),
      files_(AppFiles::of(info)),
      defaults_(files_.settings, clock),
      peers_(std::make_unique<SockDiagPeerIdentity>()),
      recognizer_(backends_.recognizer
                      ? std::move(backends_.recognizer)
                      : std::make_unique<ChosenLanguages>(
                            [this] { return defaults_.textValue("languages").value_or("eng"); })),
      hid_(info.bluetoothName, backends_.makeBluetooth, clock),
      airplay_(
          {.windows = *backends_.windows,
           .receiver = backends_.receiver.get(),
           .recognizer = *recognizer_,
           .clock = clock,
           .mayRecord =
               [this] { return backends_.permissions->screenRecording() == Permission::granted; },
           .app = "Tandrel",
           .version = info.version},
          std::nullopt),
      screens_(*backends_.capture, airplay_),
      capture_(screens_, clock),
      devices_(hid_, capture_,
               {.pairingsFile = files_.pairings,
                .mayMove = [this] { return !defaults_.boolValue("paused").value_or(false); }},
               clock),
      paymentLog_(files_.approvals, clock),
      gate_(defaults_, asker, paymentLog_, clock,
            {.timeoutSeconds = PaymentGate::timeoutSeconds(environment("TANDREL_GUARD_TIMEOUT")),
             .keyUsage = keyUsage,
             .words = PaymentGuard::GuardWords::load(info.bundle / "share/tandrel/guard/words")}),
      engine_({.hid = hid_,
               .capture = capture_,
               .devices = devices_,
               .gate = gate_,
               .recognizer = *recognizer_,
               .airplay = airplay_,
               .receiver = backends_.receiver.get(),
               .defaults = defaults_,
               .permissions = *backends_.permissions,
               .peers = peers_.get(),
               .loop = loop,
               .clock = clock,
               .info = std::move(info),
               .stateFile = files_.engineState,
               .absences = backends_.absences},
              EngineSettings::fromEnvironment()) {
    HIDPeripheral::setShared(&hid_);
    PaymentGate::setShared(&gate_);
    ScreenCapture::setShared(&capture_);
    Devices::setShared(&devices_);
    Engine::setShared(&engine_);
}

Wiring::~Wiring() {
    engine_.stop();
    Engine::setShared(nullptr);
    Devices::setShared(nullptr);
    ScreenCapture::setShared(nullptr);
    PaymentGate::setShared(nullptr);
    HIDPeripheral::setShared(nullptr);
}

}  // namespace tandrel
