#include "payments/rule_verdicts.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "payments/guard_patterns.h"

namespace tandrel::PaymentGuard {
namespace {

constexpr std::size_t kLeastListed = 2;  // other lines of a list

// The other lines of a list in which the label stands; none where it does not begin at the left.
std::vector<const Label*> linesBeside(const Label& label, const WideScreen& screen) {
    constexpr double kLeftEdge = 0.2;    // of the frame's width
    constexpr double kSameEdge = 0.01;   // of it
    constexpr double kSameHeight = 0.2;  // of the label's
    const double width = screen.frame().width;
    std::vector<const Label*> others;
    if (label.left > kLeftEdge * width) return others;
    for (const auto& other : screen.labels()) {
        if (&other != &label && std::abs(other.left - label.left) < kSameEdge * width &&
            std::abs(other.height() - label.height()) < kSameHeight * label.height()) {
            others.push_back(&other);
        }
    }
    return others;
}

}  // namespace

Verdict payButton(std::string_view label) {
    return fmt::format("a payment button (\"{}\")", label);
}

Verdict onPayment(std::string_view label, const WideScreen& screen) {
    return fmt::format("\"{}\" on a payment screen{}", label, screen.shown());
}

Verdict unlabelled(const WideScreen& screen) {
    return "an unlabelled spot on a payment screen" + screen.shown();
}

bool isStrong(const Label& label) { return label.mayBeButton() && has(Rule::strong, label.text); }

bool isPayButton(const Label& label) {
    return label.pays() || isStrong(label) || (label.amount && label.buys());
}

bool commits(const Label& label) {
    return label.mayBeButton() && label.phrases.words <= kMostCommitWords && !label.dismisses() &&
           (label.phrases.isAll(Word::commit) || label.phrases.isAll(Word::transfer) ||
            label.phrases.isAll(Word::buy) || label.phrases.isAll(Word::pay));
}

bool isListed(const Label& label, const WideScreen& screen) {
    return linesBeside(label, screen).size() >= kLeastListed;
}

bool isPricedAlone(const Label& label, const WideScreen& screen) {
    const auto others = linesBeside(label, screen);
    const auto priced = [](const Label* other) { return other->amount.has_value(); };
    return !label.pays() && others.size() >= kLeastListed && std::ranges::none_of(others, priced);
}

bool isEntry(const Label& label, const WideScreen& screen) {
    constexpr std::size_t kLeastWords = 5;
    constexpr double kLeftEdge = 0.2;  // of the frame's width
    constexpr double kMiddle = 0.44;   // of it, where what is centred begins
    const double width = screen.frame().width;
    return label.amount && label.phrases.words >= kLeastWords && label.left < kLeftEdge * width &&
           label.middle() < kMiddle * width && !label.plain.ends_with(*label.amount) &&
           !label.plain.starts_with(*label.amount);
}

}  // namespace tandrel::PaymentGuard
