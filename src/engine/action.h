#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "engine/action_target.h"

namespace tandrel {

// One thing to do on a phone, read from a request and ready to be performed.
struct TapAction {
    ScreenPoint at;
    double holdSeconds = 0.08;
};
struct SwipeAction {
    ScreenPoint from;
    ScreenPoint to;
    double durationSeconds = 0.3;
};
struct MoveAction {
    ScreenPoint to;
};
struct NudgeAction {
    int dx = 0;
    int dy = 0;
    Input::Click click = Input::Click::no;
};
struct TypeAction {
    std::string text;
};
struct KeyAction {
    std::string key;
    std::vector<std::string> modifiers;
};
struct HomeAction {};

using PhoneAction = std::variant<TapAction, SwipeAction, MoveAction, NudgeAction, TypeAction,
                                 KeyAction, HomeAction>;

// Reads the body of an action request ("/tap" and so on). Pixels become fractions of the target's
// screen. The error says which member is missing or wrong.
Result<PhoneAction> parseAction(std::string_view path, const Json& body,
                                const ActionTarget& target);

// Whether it does more than move the pointer.
bool pressesSomething(const PhoneAction& action);

// Blocks until the reports are sent.
Result<void> perform(const PhoneAction& action, Input& input);

}  // namespace tandrel
