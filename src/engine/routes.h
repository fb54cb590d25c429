#pragma once

#include <functional>
#include <span>
#include <string_view>

#include "devices/devices.h"
#include "engine/action.h"
#include "engine/action_target.h"
#include "engine/last_actions.h"
#include "engine/screen_reader.h"
#include "hid/hid_peripheral.h"
#include "http/message.h"
#include "payments/payment_gate.h"

namespace tandrel {

// The engine's HTTP API: one row a request, one function a row. Requests on different connections
// run side by side; nothing is kept between them but when each phone was last acted on.
class Routes {
 public:
    struct Collaborators {
        HIDPeripheral& hid;
        Devices& devices;
        ScreenReader& reader;
        PaymentGate& gate;
        Clock& clock;
        // The owner's switch, as it stands at the time of the call.
        std::function<bool()> paused;
        // What the engine itself adds to /status.
        std::function<void(Json& status)> addStatus;
    };

    explicit Routes(Collaborators collaborators) : to_(std::move(collaborators)) {}

    enum class WhilePaused { allowed, refused };
    struct Row {
        std::string_view method;
        std::string_view path;
        WhilePaused whilePaused;
        HTTPResponse (Routes::*reply)(const HTTPRequest& request);
    };
    static std::span<const Row> table();

    // Blocks until the reply is known, which may take minutes.
    HTTPResponse handle(const HTTPRequest& request);

 private:
    HTTPResponse status(const HTTPRequest& request);
    HTTPResponse devices(const HTTPRequest& request);
    HTTPResponse match(const HTTPRequest& request);
    HTTPResponse pair(const HTTPRequest& request);
    HTTPResponse picture(const HTTPRequest& request);
    HTTPResponse lookAt(const HTTPRequest& request);
    HTTPResponse settle(const HTTPRequest& request);
    HTTPResponse act(const HTTPRequest& request);

    Json phones();
    // The frame of the target, read for the payment gate.
    ScreenReading guardFrame(const ActionTarget& target, const std::stop_token& clientGone);
    // Blocks until the picture can be trusted to show what the action before this one did.
    void awaitEffect(const ActionTarget& target, const std::stop_token& clientGone);
    HTTPResponse performOn(const ActionTarget& target, const PhoneAction& action);

    Collaborators to_;
    LastActions lastActions_;
};

}  // namespace tandrel
