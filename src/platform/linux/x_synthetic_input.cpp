#include "platform/linux/x_synthetic_input.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <xcb/xtest.h>

#include "base/unicode.h"
#include "platform/linux/keysyms.h"

namespace tandrel {
namespace {

constexpr std::uint32_t kShift = 0xffe1;  // Shift_L
constexpr Duration kBetweenMoves = std::chrono::milliseconds(16);
// Programs look up a lent key only when they get to hear of it.
constexpr Duration kKeyboardChange = std::chrono::milliseconds(50);
constexpr Duration kPatience = std::chrono::seconds(2);
constexpr Duration kBetweenPositions = std::chrono::milliseconds(5);

struct Mapping {
    xcb_keycode_t first = 0;
    int perCode = 0;
    std::vector<std::uint32_t> keysyms;
};

Mapping keyboardMapping(const XConnection& x) {
    const xcb_setup_t* setup = xcb_get_setup(x.get());
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto reply = xReply(xcb_get_keyboard_mapping_reply(
        x.get(), xcb_get_keyboard_mapping(x.get(), setup->min_keycode, count), nullptr));
    if (!reply) return {};
    const xcb_keysym_t* first = xcb_get_keyboard_mapping_keysyms(reply.get());
    return {setup->min_keycode,
            reply->keysyms_per_keycode,
            {first, first + xcb_get_keyboard_mapping_keysyms_length(reply.get())}};
}

}  // namespace

Result<std::unique_ptr<SyntheticInput>> XSyntheticInput::open() {
    auto x = TRY(XConnection::open());
    if (!x->has(xcb_test_id)) return fail("the display takes no events from programs (no XTEST)");
    return std::unique_ptr<SyntheticInput>(new XSyntheticInput(std::move(x)));
}

void XSyntheticInput::fake(std::uint8_t type, std::uint8_t detail, DesktopPoint at) const {
    const auto coordinate = [](double value) {
        return static_cast<std::int16_t>(std::clamp(std::round(value), -32768.0, 32767.0));
    };
    xcb_test_fake_input(x_->get(), type, detail, XCB_CURRENT_TIME, x_->root(), coordinate(at.x),
                        coordinate(at.y), 0);
}

Result<void> XSyntheticInput::finish() const {
    x_->sync();
    if (x_->isBroken()) return fail("the display is gone");
    return {};
}

Result<void> XSyntheticInput::click(DesktopPoint at) {
    TRY_VOID(point(at));
    fake(XCB_BUTTON_PRESS, 1);
    fake(XCB_BUTTON_RELEASE, 1);
    return finish();
}

Result<void> XSyntheticInput::drag(DesktopPoint from, DesktopPoint to, Duration duration) {
    const auto steps = std::max<std::int64_t>(duration / kBetweenMoves, 1);
    TRY_VOID(point(from));
    fake(XCB_BUTTON_PRESS, 1);
    for (std::int64_t i = 1; i <= steps; ++i) {
        const double share = static_cast<double>(i) / static_cast<double>(steps);
        fake(XCB_MOTION_NOTIFY, 0,
             {from.x + (to.x - from.x) * share, from.y + (to.y - from.y) * share});
        x_->sync();
        systemClock().sleepFor(std::min(duration, kBetweenMoves));
    }
    fake(XCB_BUTTON_RELEASE, 1);
    return finish();
}

// Moves the pointer there, onto the window that was activated and not onto one that covers it.
Result<void> XSyntheticInput::point(DesktopPoint at) const {
    fake(XCB_MOTION_NOTIFY, 0, at);
    TRY_VOID(finish());
    if (active_ == XCB_NONE) return {};
    const bool isThere = await([&] {
        const auto pointer = xReply(
            xcb_query_pointer_reply(x_->get(), xcb_query_pointer(x_->get(), x_->root()), nullptr));
        return pointer && pointer->child == topLevelOf(active_);
    });
    TRY_VOID(finish());
    if (isThere) return {};
    return fail("another window covers that place, or it lies outside the desktop");
}

XReply<xcb_get_window_attributes_reply_t> XSyntheticInput::attributes(xcb_window_t window) const {
    return xReply(xcb_get_window_attributes_reply(
        x_->get(), xcb_get_window_attributes(x_->get(), window), nullptr));
}

// The child of the root that holds the window: itself, or the frame that the window manager drew.
xcb_window_t XSyntheticInput::topLevelOf(xcb_window_t window) const {
    constexpr int kDeepest = 16;
    for (int depth = 0; depth < kDeepest; ++depth) {
        const auto tree =
            xReply(xcb_query_tree_reply(x_->get(), xcb_query_tree(x_->get(), window), nullptr));
        if (!tree || tree->parent == XCB_NONE) return XCB_NONE;
        if (tree->parent == x_->root()) return window;
        window = tree->parent;
    }
    return XCB_NONE;
}

std::optional<XSyntheticInput::Stroke> XSyntheticInput::findStroke(std::uint32_t keysym) const {
    const Mapping mapping = keyboardMapping(*x_);
    if (mapping.perCode < 1) return std::nullopt;
    // A code's first keysym comes by itself, its second with Shift.
    for (int level = 0; level < std::min(mapping.perCode, 2); ++level) {
        for (std::size_t i = static_cast<std::size_t>(level); i < mapping.keysyms.size();
             i += static_cast<std::size_t>(mapping.perCode)) {
            if (mapping.keysyms[i] != keysym) continue;
            const auto code = mapping.first + i / static_cast<std::size_t>(mapping.perCode);
            return Stroke{static_cast<xcb_keycode_t>(code), level == 1};
        }
    }
    return std::nullopt;
}

// A character that no key of this keyboard has is given to one that has none.
Result<XSyntheticInput::Stroke> XSyntheticInput::lendStroke(std::uint32_t keysym) const {
    const Mapping mapping = keyboardMapping(*x_);
    TRY_VOID(finish());
    const auto perCode = static_cast<std::size_t>(std::max(mapping.perCode, 1));
    for (std::size_t i = mapping.keysyms.size() / perCode; i-- > 0;) {
        const auto* first = mapping.keysyms.data() + i * perCode;
        if (std::any_of(first, first + perCode, [](std::uint32_t k) { return k != 0; })) continue;
        const auto code = static_cast<xcb_keycode_t>(mapping.first + i);
        xcb_change_keyboard_mapping(x_->get(), 1, code, 1, &keysym);
        x_->sync();
        systemClock().sleepFor(kKeyboardChange);
        return Stroke{code, false};
    }
    return fail("the keyboard has no key left for a character that it lacks");
}

Result<void> XSyntheticInput::press(std::uint32_t keysym,
                                    const std::vector<std::uint32_t>& modifiers) const {
    const auto known = findStroke(keysym);
    const Stroke stroke = known ? *known : TRY(lendStroke(keysym));
    std::vector<std::uint32_t> held = modifiers;
    if (stroke.isShifted && std::ranges::count(held, kShift) == 0) held.push_back(kShift);
    std::vector<xcb_keycode_t> codes;
    for (const std::uint32_t modifier : held) {
        const auto code = findStroke(modifier);
        if (!code) return fail("the keyboard lacks a modifier key");
        codes.push_back(code->code);
    }
    for (const xcb_keycode_t code : codes) fake(XCB_KEY_PRESS, code);
    fake(XCB_KEY_PRESS, stroke.code);
    fake(XCB_KEY_RELEASE, stroke.code);
    for (auto code = codes.rbegin(); code != codes.rend(); ++code) fake(XCB_KEY_RELEASE, *code);
    TRY_VOID(finish());
    if (known) return {};
    systemClock().sleepFor(kKeyboardChange);
    constexpr std::uint32_t kNone = 0;
    xcb_change_keyboard_mapping(x_->get(), 1, stroke.code, 1, &kNone);
    return finish();
}

Result<void> XSyntheticInput::type(std::string_view text) {
    for (const std::uint32_t keysym : keysymsOf(text)) TRY_VOID(press(keysym, {}));
    return {};
}

Result<void> XSyntheticInput::key(std::string_view key, const std::vector<std::string>& modifiers) {
    const auto keysym = keysymNamed(key);
    if (!keysym) return fail("unknown key " + std::string(key));
    std::vector<std::uint32_t> held;
    for (const std::string& name : modifiers) {
        const auto modifier = modifierNamed(name);
        if (!modifier) return fail("unknown modifier " + name);
        held.push_back(*modifier);
    }
    return press(*keysym, held);
}

Result<void> XSyntheticInput::activate(std::uint32_t window) {
    const auto state = attributes(window);
    if (!state) return fail("window " + std::to_string(window) + " is gone");
    active_ = window;
    const xcb_atom_t active = x_->atom("_NET_ACTIVE_WINDOW");
    const auto supported = x_->numbers(x_->root(), x_->atom("_NET_SUPPORTED"));
    if (active != XCB_ATOM_NONE && std::ranges::count(supported, active) > 0) {
        requestActivation(window, active);
        return awaitActive(window, active);
    }
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(x_->get(), window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    if (state->map_state == XCB_MAP_STATE_VIEWABLE) {
        xcb_set_input_focus(x_->get(), XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    }
    return finish();
}

void XSyntheticInput::requestActivation(xcb_window_t window, xcb_atom_t active) const {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = active;
    message.data.data32[0] = 2;  // a request of the person's own
    xcb_send_event(x_->get(), 0, x_->root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   // The protocol's event is the structure's bytes.
                   reinterpret_cast<const char*>(&message));
}

// Until the window has the keyboard, what is typed would go to another one.
Result<void> XSyntheticInput::awaitActive(xcb_window_t window, xcb_atom_t active) const {
    const bool isActive = await([&] {
        // What was just minimised is named for a moment more.
        const auto state = attributes(window);
        const auto now = x_->numbers(x_->root(), active);
        return state && state->map_state == XCB_MAP_STATE_VIEWABLE && !now.empty() &&
               now.front() == window;
    });
    TRY_VOID(finish());
    if (isActive) return {};
    return fail("the desktop does not bring window " + std::to_string(window) + " to the front");
}

// The window manager takes its time to do what it is asked for.
bool XSyntheticInput::await(const std::function<bool()>& fits) const {
    const TimePoint deadline = systemClock().now() + kPatience;
    while (!fits()) {
        if (x_->isBroken() || systemClock().now() >= deadline) return false;
        systemClock().sleepFor(kBetweenPositions);
    }
    return true;
}

}  // namespace tandrel
