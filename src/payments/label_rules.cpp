#include "payments/label_rules.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <fmt/format.h>

#include "base/unicode.h"
#include "payments/folded_text.h"
#include "payments/guard_patterns.h"

namespace tandrel::PaymentGuard {
Verdict payWords(const WideScreen& screen) {
    if (!screen.taps()) return std::nullopt;
    for (const Label* label : screen.hit()) {
        if (label->pays()) return payButton(label->text);
    }
    return std::nullopt;
}

Verdict amountButton(const WideScreen& screen) {
    if (!screen.taps()) return std::nullopt;
    for (const Label* label : screen.hit()) {
        if (label->amount && label->buys() && !isEntry(*label, screen) &&
            !isPricedAlone(*label, screen)) {
            return payButton(label->text);
        }
    }
    return std::nullopt;
}

Verdict bareAmount(const WideScreen& screen) {
    const Label* label = screen.taps() ? screen.label() : nullptr;
    if (!label || !label->amount || label->phrases.words > 0) return std::nullopt;
    if (has(Rule::money, label->plain)) return std::nullopt;
    return fmt::format("a price button (\"{}\")", label->text);
}

Verdict unitButton(const WideScreen& screen) {
    const Label* label = screen.taps() ? screen.label() : nullptr;
    if (!label || !label->mayBeButton() || label->dismisses()) return std::nullopt;
    const auto& phrases = label->phrases;
    if (!phrases.contains(Word::unit) || !has(Rule::numeric, label->plain)) return std::nullopt;
    if (!phrases.startsWith(Word::buy) && !phrases.startsWith(Word::weakBuy) &&
        !phrases.endsWith(Word::buy)) {
        return std::nullopt;
    }
    return payButton(label->text);
}

Verdict everyLine(const WideScreen& screen) {
    if (!screen.taps()) return std::nullopt;
    for (const Label* label : screen.hit()) {
        if (isStrong(*label)) return payButton(label->text);
        if (label->mayBeButton() && label != screen.label() && has(Rule::priceOnly, label->text)) {
            return fmt::format("a price button (\"{}\")", label->text);
        }
    }
    return std::nullopt;
}

Verdict splitLabel(const WideScreen& screen) {
    if (!screen.taps() || !screen.label() || screen.label()->dismisses()) return std::nullopt;
    for (const auto& label : screen.joinedLabels()) {
        if (isPayButton(label)) return payButton(label.text);
    }
    return std::nullopt;
}

Verdict lookAlikes(const WideScreen& screen) {
    std::vector<Line> lines = screen.lines();
    bool changed = false;
    for (auto& line : lines) {
        std::string spelled = unmasked(line.text);
        changed = changed || spelled != line.text;
        line.text = std::move(spelled);
    }
    if (!changed) return std::nullopt;
    return assess(lines, screen.frame(), screen.action());
}

Verdict mirrored(const WideScreen& screen) {
    const Label* label = screen.taps() ? screen.label() : nullptr;
    if (!label || label->text.size() > 100) return std::nullopt;
    const Label turned = screen.makeLabel(reversed(label->text));
    if (!isPayButton(turned)) return std::nullopt;
    return payButton(turned.text);
}

}  // namespace tandrel::PaymentGuard
