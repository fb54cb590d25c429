#include "payments/wider_guard.h"

#include <gtest/gtest.h>

#include "payments/wider_rules.h"

namespace tandrel::PaymentGuard {
namespace {

std::optional<WiderVerdict> judged(std::string_view screen, std::string_view without = {}) {
    const RuleExample example{screen};
    return WiderGuard().assess(example.lines(), kExampleFrame, example.action(), without);
}

// What each rule must catch, `assess` lets through and this rule alone would do; what it must leave
// alone, no rule asks about.
TEST(WiderRules, EveryRowsExamplesHold) {
    for (const auto& rule : widerRules()) {
        const auto lines = rule.catches.lines();
        EXPECT_EQ(assess(lines, kExampleFrame, rule.catches.action()), std::nullopt) << rule.name;
        const WideScreen screen(lines, kExampleFrame, rule.catches.action(),
                                *GuardWords::builtIn());
        EXPECT_TRUE(rule.judge(screen)) << rule.name;
        const auto other = judged(rule.leaves.text);
        EXPECT_FALSE(other) << rule.name << ": " << (other ? other->rule : "");
    }
}

}  // namespace
}  // namespace tandrel::PaymentGuard
