#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "payments/wide_screen.h"

// The rules of the wider guard, one row each.
namespace tandrel::PaymentGuard {

// A screen and an action as text, one line of the screen a line. What begins with "> " is tapped,
// and ">" alone is a tapped spot without text; " >>" behind a line taps right of it. "+ " is around
// the line before it, "_ " right below it, "/ " right of it, and "| " runs downwards. What follows
// "foot" stands at the bottom. Instead of a tap, the first line may be "swipe", "enter" or "type
// 1234".
struct RuleExample {
    std::string_view text;

    // Laid out on a frame of `kExampleFrame`.
    std::vector<Line> lines() const;
    Action action() const;
};
inline constexpr FrameSize kExampleFrame{600, 1300};

struct WiderRule {
    std::string_view name;
    std::string_view sees;
    std::string_view why;
    RuleExample catches;
    RuleExample leaves;
    // Why the owner must be asked; none when this rule sees nothing.
    std::optional<std::string> (*judge)(const WideScreen& screen);
};

// In the order in which they are tried; the first that sees something names the question.
std::span<const WiderRule> widerRules();

}  // namespace tandrel::PaymentGuard
