#include "payments/guarded_action.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/unicode.h"
#include "payments/guard_patterns.h"

namespace tandrel {
namespace {

using PaymentGuard::Action;
using PaymentGuard::Kind;

// HID Usage Tables 1.4, Keyboard/Keypad page.
constexpr std::uint8_t kReturnUsage = 0x28;
constexpr std::uint8_t kSpaceUsage = 0x2C;
constexpr std::uint8_t kKeypadEnterUsage = 0x58;

constexpr std::size_t kLongestLabelInWording = 60;  // characters
// How far an unread area lies from what it may concern, in reaches of a label: its box is less
// certain than that of a line that was read.
constexpr double kUnreadReach = 2.0;
// How far the pointer covers the screen around its place, in screen widths; the phone's owner can
// choose a larger one than the usual.
constexpr double kPointerRadius = 0.06;

struct Point {
    std::optional<double> x;
    std::optional<double> y;
};

Point pointOf(const Json& body, const char* xKey, const char* yKey,
              PaymentGuard::FrameSize screen) {
    const auto x = numberMember(body, xKey);
    const auto y = numberMember(body, yKey);
    if (!x || !y) return {};
    const auto clamped = [](double value) { return std::clamp(value, 0.0, 1.0); };
    if (boolMember(body, "fraction").value_or(false)) return {clamped(*x), clamped(*y)};
    if (!(screen.width > 0) || !(screen.height > 0)) return {};
    return {clamped(*x / screen.width), clamped(*y / screen.height)};
}

GuardedAction tapOf(const Json& body, PaymentGuard::FrameSize screen) {
    const Point at = pointOf(body, "x", "y", screen);
    return {.action = {.kind = Kind::tap, .x = at.x, .y = at.y}};
}

GuardedAction swipeOf(const Json& body, PaymentGuard::FrameSize screen) {
    const Point from = pointOf(body, "x1", "y1", screen);
    const Point to = pointOf(body, "x2", "y2", screen);
    return {.action = {.kind = Kind::swipe, .x = from.x, .y = from.y, .x2 = to.x, .y2 = to.y}};
}

std::optional<GuardedAction> clickOf(const Json& body, std::optional<PlaceOnScreen> pointer) {
    if (!boolMember(body, "click").value_or(false)) return std::nullopt;
    GuardedAction click{.action = {.kind = Kind::tap}};
    if (pointer) {
        click.action.x = pointer->x;
        click.action.y = pointer->y;
    }
    const auto moves = [&](const char* key) {
        return body.contains(key) && numberMember(body, key) != 0.0;
    };
    click.strays = moves("dx") || moves("dy");
    return click;
}

GuardedAction typingOf(const Json& body) {
    std::string text = textMember(body, "text").value_or("");
    const bool quiet = text.find_first_of("\r\n") == std::string::npos;
    return {.action = {.kind = Kind::type, .text = std::move(text)}, .quiet = quiet};
}

bool holdsModifiers(const Json& body) {
    const auto list = body.find("modifiers");
    return list != body.end() && list->is_array() &&
           std::ranges::any_of(*list, [](const Json& name) { return name.is_string(); });
}

std::optional<GuardedAction> keyOf(const Json& body, const KeyUsage& keyUsage) {
    const auto key = textMember(body, "key");
    if (!key) return std::nullopt;
    const std::string name = lowerCased(*key);
    const auto usage = keyUsage ? keyUsage(*key) : std::nullopt;
    if (name == "enter" || name == "return" || usage == kReturnUsage ||
        usage == kKeypadEnterUsage) {
        return GuardedAction{.action = {.kind = Kind::enter}};
    }
    if ((name == "space" || usage == kSpaceUsage) && !holdsModifiers(body)) {
        return GuardedAction{.action = {.kind = Kind::enter}, .quiet = true};
    }
    return std::nullopt;
}

struct Box {
    double left;
    double top;
    double right;
    double bottom;
};

// Where, in pixels, an action with a place happens: its point, or the whole way of a swipe along
// which a slider may lie. A scroll crosses most of the screen without touching anything but where
// it begins.
Box boxOf(const Action& action, PaymentGuard::FrameSize size) {
    const double x = *action.x * size.width;
    const double y = *action.y * size.height;
    const double x2 = action.x2.value_or(*action.x) * size.width;
    const double y2 = action.y2.value_or(*action.y) * size.height;
    if (std::abs(x2 - x) < std::abs(y2 - y)) return {x, y, x, y};
    return {std::min(x, x2), std::min(y, y2), std::max(x, x2), std::max(y, y2)};
}

bool speaksOfMoney(const GateFrame& frame) {
    const std::string joined = fmt::format("{}", fmt::join(frame.texts(), "\n"));
    return has(PaymentGuard::Rule::money, joined) || has(PaymentGuard::Rule::moneyWords, joined) ||
           has(PaymentGuard::Rule::passcode, joined);
}

}  // namespace

std::optional<GuardedAction> guardedAction(const HTTPRequest& request,
                                           PaymentGuard::FrameSize screen,
                                           std::optional<PlaceOnScreen> pointer,
                                           const KeyUsage& keyUsage) {
    if (request.path == "/tap") return tapOf(request.body, screen);
    if (request.path == "/swipe") return swipeOf(request.body, screen);
    if (request.path == "/nudge") return clickOf(request.body, pointer);
    if (request.path == "/type") return typingOf(request.body);
    if (request.path == "/key") return keyOf(request.body, keyUsage);
    return std::nullopt;
}

std::string wording(const Action& action, const GateFrame& frame) {
    if (action.kind == Kind::enter) return "press Return";
    if (action.kind == Kind::type) return "type on a passcode screen";
    const auto label = PaymentGuard::label(action.x, action.y, frame.lines, frame.size);
    if (!label) return "tap the screen";
    return fmt::format("tap \u201C{}\u201D", firstGraphemes(*label, kLongestLabelInWording));
}

bool underPointer(const Action& action, std::optional<PlaceOnScreen> pointer,
                  const GateFrame& frame) {
    if (!action.x || !action.y || !pointer) return false;
    const double radius = kPointerRadius * frame.size.width;
    const Box disc{pointer->x * frame.size.width - radius, pointer->y * frame.size.height - radius,
                   pointer->x * frame.size.width + radius, pointer->y * frame.size.height + radius};
    const double x = *action.x * frame.size.width;
    const double y = *action.y * frame.size.height;
    const auto holds = [](const Box& box, double reach, double px, double py) {
        return box.left - reach <= px && px <= box.right + reach && box.top - reach <= py &&
               py <= box.bottom + reach;
    };
    if (holds(disc, 0, x, y)) return true;
    const double reach = PaymentGuard::tolerance(frame.size);
    return std::ranges::any_of(frame.lines, [&](const PaymentGuard::Line& line) {
        return holds({line.x, line.y, line.x + line.w, line.y + line.h}, reach, x, y) &&
               line.x <= disc.right && disc.left <= line.x + line.w && line.y <= disc.bottom &&
               disc.top <= line.y + line.h;
    });
}

bool dependsOnUnread(const GuardedAction& guarded, const GateFrame& frame) {
    if (guarded.quiet) return false;
    const Action& action = guarded.action;
    if (!action.x || !action.y || guarded.strays) {
        return !frame.unread.empty() && speaksOfMoney(frame);
    }
    const Box around = boxOf(action, frame.size);
    const double reach = kUnreadReach * PaymentGuard::tolerance(frame.size);
    return std::ranges::any_of(frame.unread, [&](const UnreadArea& area) {
        return area.x - reach <= around.right && around.left <= area.x + area.width + reach &&
               area.y - reach <= around.bottom && around.top <= area.y + area.height + reach;
    });
}

}  // namespace tandrel
