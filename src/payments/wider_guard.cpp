#include "payments/wider_guard.h"

#include <fmt/format.h>

#include "payments/wide_screen.h"
#include "payments/wider_rules.h"

namespace tandrel::PaymentGuard {
namespace {

std::string onOneLine(std::string_view example) {
    std::string result;
    for (const char c : example) result += c == '\n' ? std::string(" / ") : std::string(1, c);
    return result;
}

}  // namespace

WiderGuard::WiderGuard(std::shared_ptr<const GuardWords> words) : words_(std::move(words)) {}

std::optional<WiderVerdict> WiderGuard::assess(const std::vector<Line>& lines, FrameSize frame,
                                               const Action& action,
                                               std::string_view without) const {
    const WideScreen screen(lines, frame, action, *words_);
    for (const auto& rule : widerRules()) {
        if (rule.name == without) continue;
        if (auto why = rule.judge(screen)) return WiderVerdict{std::move(*why), rule.name};
    }
    return std::nullopt;
}

bool WiderGuard::paymentScreen(const std::vector<std::string>& texts) const {
    std::vector<Line> lines;
    lines.reserve(texts.size());
    for (const auto& text : texts) lines.push_back({text, 0, 0, 0, 0});
    const Action nothing{.kind = Kind::enter};
    return WideScreen(lines, {}, nothing, *words_).isPayment();
}

int printRules(std::FILE* out) {
    for (const auto& rule : widerRules()) {
        fmt::print(out, "{}\n  sees     {}\n  because  {}\n  asks     {}\n  leaves   {}\n",
                   rule.name, rule.sees, rule.why, onOneLine(rule.catches.text),
                   onOneLine(rule.leaves.text));
    }
    return 0;
}

}  // namespace tandrel::PaymentGuard
