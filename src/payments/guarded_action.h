#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

#include "http/message.h"
#include "payments/gate_road.h"

namespace tandrel {

// The HID usage (Keyboard/Keypad page) that the key of this name or character presses.
using KeyUsage = std::function<std::optional<std::uint8_t>(std::string_view key)>;

// A request as the classifier understands it.
struct GuardedAction {
    PaymentGuard::Action action = {};
    // Checked only when a payment screen was seen lately: typed text and the space key, which are
    // frequent and rarely pay.
    bool quiet = false;
    // A click that follows a motion of unknown length: it may land beside `action`'s point.
    bool strays = false;

    bool operator==(const GuardedAction&) const = default;
};

// The action of a request; none when its route is not guarded. `screen` is the phone's screen as in
// GateFrame, and `pointer` is the road's. Points are clamped to the screen, as the pointer is.
std::optional<GuardedAction> guardedAction(const HTTPRequest& request,
                                           PaymentGuard::FrameSize screen,
                                           std::optional<PlaceOnScreen> pointer,
                                           const KeyUsage& keyUsage);

// The action's wording for the owner.
std::string wording(const PaymentGuard::Action& action, const GateFrame& frame);

// Whether the phone's pointer may lie over the text that the action is judged by: it hides what is
// under it, and half a label reads as another one.
bool underPointer(const PaymentGuard::Action& action, std::optional<PlaceOnScreen> pointer,
                  const GateFrame& frame);

// Whether text that the verdict on an action that is not quiet hangs on may be among what could not
// be read: around its point or along its swipe; for a key, and for a click that may land anywhere,
// all over a screen that speaks of money.
bool dependsOnUnread(const GuardedAction& guarded, const GateFrame& frame);

}  // namespace tandrel
