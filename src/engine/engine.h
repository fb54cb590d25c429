#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "base/app_info.h"
#include "devices/devices.h"
#include "engine/engine_settings.h"
#include "engine/routes.h"
#include "hid/hid_peripheral.h"
#include "http/server.h"
#include "payments/payment_gate.h"
#include "platform/main_loop.h"
#include "platform/peer_identity.h"
#include "platform/permissions.h"
#include "platform/running_applications.h"
#include "platform/user_defaults.h"
#include "screen/airplay_server.h"
#include "screen/screen_capture.h"

namespace tandrel {

// Who serves a port.
struct EngineMode {
    enum class Kind { stopped, own, external, failed };
    Kind kind = Kind::stopped;
    std::string detail;  // external: the name of who answers; failed: the reason

    bool operator==(const EngineMode&) const = default;
};

// The process-wide service: owns the HTTP servers of both ports and starts Bluetooth and the screen
// capture. Everything but `handle` is for the main thread.
class Engine {
 public:
    struct Services {
        HIDPeripheral& hid;
        ScreenCapture& capture;
        Devices& devices;
        PaymentGate& gate;
        TextRecognizer& recognizer;
        AirPlayServer& airplay;
        AirPlayReceiver* receiver;  // none: mirroring is left to programs that the owner starts
        UserDefaults& defaults;
        Permissions& permissions;
        PeerIdentity* peers;  // none: callers are not checked for their user
        MainLoop& loop;
        Clock& clock;
        AppInfo info;
        std::filesystem::path stateFile;  // where the port is told to helpers
        // Sentences on what this system lacks, for /status; may be empty.
        std::function<std::vector<std::string>()> absences;
    };

    Engine(Services services, EngineSettings settings);
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    static Engine& shared();
    static void setShared(Engine* instance);

    // Starts once. Blocks up to a few seconds when another engine answers on the port; `stop` cuts
    // that short.
    void start(std::stop_token stop = {});
    // Ends serving: both ports are free and every thread has ended when it returns. Safe to repeat.
    void stop();

    void startBluetooth();
    void startScreens();
    void reconnect();
    // Ends actions under way and releases every key and button on every phone: before the computer
    // sleeps. Bounded.
    void letGo();
    // The next request for the mirrored picture starts a fresh capture.
    void resetAirPlayCapture() { to_.airplay.reset(); }

    const EngineMode& mode() const { return mode_; }
    const EngineMode& airplayMode() const { return airplayMode_; }
    const EngineSettings& settings() const { return settings_; }

    // Where this process listens; meaningful while the mode of that port is own.
    std::string ownURL() const;
    std::string ownAirplayURL() const;

    bool paused() const;
    Result<void> setPaused(bool paused);

    // The reply to one API request. Any thread; may block for minutes.
    HTTPResponse handle(const HTTPRequest& request);

 private:
    void serveEngine(const std::stop_token& stop);
    void serveAirplay();
    HTTPResponse handleAirplay(const HTTPRequest& request);
    bool isAirplayChosen() const;
    void watchAirplay();
    void addStatus(Json& status) const;
    void writeStateFile() const;

    Services to_;
    const EngineSettings settings_;
    EngineMode mode_;
    EngineMode airplayMode_;
    bool bluetoothStarted_ = false;
    bool screensStarted_ = false;
    std::atomic<bool> stopping_ = false;
    ScreenReader reader_;
    Routes routes_;
    std::unique_ptr<HTTPServer> server_;
    std::unique_ptr<HTTPServer> airplayServer_;
    std::unique_ptr<Timer> matchAfterReconnect_;
    std::unique_ptr<Timer> airplayTimer_;
    bool airplayWasChosen_ = false;
    std::atomic<bool> airplayBusy_ = false;
    SerialQueue airplayQueue_{"tandrel.airplay"};  // goes first: its tasks use the rest
};

}  // namespace tandrel
