#include "engine/action.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace tandrel {
namespace {

constexpr std::uint16_t kHomeUsage = 0x223;  // AC Home (HID Usage Tables, Consumer page)

// The point under two keys as fractions of the screen.
Result<ScreenPoint> point(const Json& body, const char* xKey, const char* yKey,
                          const ActionTarget& target) {
    const auto x = numberMember(body, xKey);
    const auto y = numberMember(body, yKey);
    if (!x || !y) return fail(fmt::format("{} and {} are required", xKey, yKey));
    if (boolMember(body, "fraction").value_or(false)) return ScreenPoint{*x, *y};
    if (!target.device) {
        return fail(
            fmt::format("without a USB screen, {}/{} must be fractions (0-1) with "
                        "fraction: true",
                        xKey, yKey));
    }
    if (!target.screenSize) return fail("no frame yet from " + target.device->name());
    return ScreenPoint{*x / target.screenSize->width, *y / target.screenSize->height};
}

// A member that may be missing but not of another type.
Result<double> numberOr(const Json& body, const char* key, double fallback) {
    if (!body.contains(key)) return fallback;
    if (const auto number = numberMember(body, key)) return *number;
    return fail(fmt::format("{} must be a number", key));
}

Result<int> distance(const Json& body, const char* key) {
    constexpr double kFarthest = 1e6;  // far beyond what the input accepts, within an int
    const double value = TRY(numberOr(body, key, 0));
    if (std::abs(value) > kFarthest) return fail(fmt::format("{} is too far", key));
    return static_cast<int>(std::round(value));
}

Result<PhoneAction> parseTap(const Json& body, const ActionTarget& target) {
    TapAction tap;
    tap.at = TRY(point(body, "x", "y", target));
    tap.holdSeconds = TRY(numberOr(body, "hold", tap.holdSeconds));
    return tap;
}

Result<PhoneAction> parseSwipe(const Json& body, const ActionTarget& target) {
    SwipeAction swipe;
    swipe.from = TRY(point(body, "x1", "y1", target));
    swipe.to = TRY(point(body, "x2", "y2", target));
    swipe.durationSeconds = TRY(numberOr(body, "duration", swipe.durationSeconds));
    return swipe;
}

Result<PhoneAction> parseMove(const Json& body, const ActionTarget& target) {
    return MoveAction { TRY(point(body, "x", "y", target)) };
}

Result<PhoneAction> parseNudge(const Json& body, const ActionTarget&) {
    NudgeAction nudge;
    nudge.dx = TRY(distance(body, "dx"));
    nudge.dy = TRY(distance(body, "dy"));
    if (boolMember(body, "click").value_or(false)) nudge.click = Input::Click::yes;
    return nudge;
}

Result<PhoneAction> parseType(const Json& body, const ActionTarget&) {
    auto text = textMember(body, "text");
    if (!text) return fail("text is required");
    return TypeAction{std::move(*text)};
}

Result<PhoneAction> parseKey(const Json& body, const ActionTarget&) {
    auto key = textMember(body, "key");
    if (!key) return fail("key is required");
    KeyAction action{std::move(*key), {}};
    const Json modifiers = body.value("modifiers", Json::array());
    if (!modifiers.is_array() || !std::ranges::all_of(modifiers, &Json::is_string)) {
        return fail("modifiers must be a list of modifier names");
    }
    action.modifiers = modifiers.get<std::vector<std::string>>();
    TRY(Input::keyStroke(action.key, action.modifiers));
    return action;
}

Result<PhoneAction> parseHome(const Json&, const ActionTarget&) { return HomeAction{}; }

struct ActionRow {
    std::string_view path;
    Result<PhoneAction> (*parse)(const Json& body, const ActionTarget& target);
};

constexpr ActionRow kActions[] = {
    {"/tap", parseTap},   {"/swipe", parseSwipe}, {"/move", parseMove}, {"/nudge", parseNudge},
    {"/type", parseType}, {"/key", parseKey},     {"/home", parseHome},
};

struct Performer {
    Input& input;
    Result<void> operator()(const TapAction& a) { return input.tap(a.at, a.holdSeconds); }
    Result<void> operator()(const SwipeAction& a) {
        return input.swipe(a.from, a.to, a.durationSeconds);
    }
    Result<void> operator()(const MoveAction& a) { return input.move(a.to); }
    Result<void> operator()(const NudgeAction& a) { return input.nudge(a.dx, a.dy, a.click); }
    Result<void> operator()(const TypeAction& a) { return input.type(a.text); }
    Result<void> operator()(const KeyAction& a) { return input.key(a.key, a.modifiers); }
    Result<void> operator()(const HomeAction&) { return input.consumer(kHomeUsage); }
};

}  // namespace

Result<PhoneAction> parseAction(std::string_view path, const Json& body,
                                const ActionTarget& target) {
    for (const ActionRow& row : kActions) {
        if (row.path == path) return row.parse(body, target);
    }
    return fail("not found", 404);
}

bool pressesSomething(const PhoneAction& action) {
    if (std::holds_alternative<MoveAction>(action)) return false;
    const auto* nudge = std::get_if<NudgeAction>(&action);
    return !nudge || nudge->click == Input::Click::yes;
}

Result<void> perform(const PhoneAction& action, Input& input) {
    return std::visit(Performer{input}, action);
}

}  // namespace tandrel
