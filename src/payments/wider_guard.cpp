#include "payments/wider_guard.h"

#include <algorithm>

#include "payments/folded_text.h"
#include "payments/wide_screen.h"
#include "payments/wider_rules.h"

namespace tandrel::PaymentGuard {
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

Details WiderGuard::details(const std::vector<std::string>& texts) const {
    Details result = PaymentGuard::details(texts);
    if (!result.amounts.empty()) return result;
    for (const auto& text : texts) {
        const auto amount = words_->amount(plain(text));
        if (!amount) continue;
        const std::string shown = norm(*amount);
        const bool known = std::ranges::find(result.amounts, shown) != result.amounts.end();
        if (!known) result.amounts.push_back(shown);
    }
    return result;
}

bool WiderGuard::paymentScreen(const std::vector<std::string>& texts) const {
    std::vector<Line> lines;
    lines.reserve(texts.size());
    for (const auto& text : texts) lines.push_back({text, 0, 0, 0, 0});
    const Action nothing{.kind = Kind::enter};
    return WideScreen(lines, {}, nothing, *words_).isPayment();
}

}  // namespace tandrel::PaymentGuard
