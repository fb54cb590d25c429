#include "payments/standing_rules.h"

#include <algorithm>
#include <cmath>

#include "base/ascii.h"
#include "payments/guard_patterns.h"

namespace tandrel::PaymentGuard {
namespace {

constexpr double kLowerHalf = 0.5;    // of the frame's height, where it begins
constexpr double kHead = 0.15;        // of it, where the bar at the top ends
constexpr double kFoot = 0.7;         // where what stays in place while a page scrolls begins
constexpr double kSameEdge = 0.02;    // of the frame's width, between the ends of a column
constexpr double kRightSide = 0.75;   // of it, where a column of prices ends
constexpr double kBarRow = 1.5;       // of a line's height, above and below
constexpr double kRefusalNear = 0.1;  // of the frame's height
constexpr std::size_t kMostStandingWords = 8;
constexpr std::size_t kMostBarWords = 4;
constexpr std::size_t kMostUnitWords = 5;
constexpr std::size_t kLeastLongWords = 5;  // of a button in more words than a button has
constexpr std::size_t kLeastPricesInColumn = 3;
constexpr std::size_t kMostAmountsOfOne = 3;  // payment
constexpr std::size_t kLeastPricesOfUpsell = 2;

bool besideEachOther(const Label& one, const Label& other) {
    return one.bottom > other.top && one.top < other.bottom;
}

bool isCentred(const Label& label, const WideScreen& screen) {
    return std::abs(label.middle() / screen.frame().width - 0.5) < kCentred;
}

bool isBelow(const Label& label, double share, const WideScreen& screen) {
    return label.top > share * screen.frame().height;
}

// The tapped label, where it may be any button but one that pays nothing.
const Label* anyButton(const WideScreen& screen, std::size_t mostWords) {
    const Label* label = screen.taps() ? screen.label() : nullptr;
    if (!label || !screen.amount() || screen.isDone()) return nullptr;
    const auto& phrases = label->phrases;
    if (phrases.words == 0 || phrases.words > mostWords) return nullptr;
    if (label->dismisses() || label->isHarmless()) return nullptr;
    // "19,99 zł/mies." ends in an abbreviation.
    const bool sentence = label->text.ends_with('.') && !label->amount;
    if (sentence || label->text.ends_with('?')) return nullptr;
    return label;
}

// It may as well do something else, and nothing says that it is about paying.
bool isIdle(const Label& label, const WideScreen& screen) {
    return label.isSoft() && !screen.isDue() && !screen.isClearlyDue();
}

// "Send", "Confirm and send", "Unlock", where a price or two are all that is on the screen.
bool sellsOrSends(const Label& label, const WideScreen& screen) {
    const auto& phrases = label.phrases;
    if (screen.amounts() > kMostAmountsOfOne) return false;
    return phrases.startsWith(Word::weakBuy) || phrases.startsWith(Word::transfer) ||
           (phrases.startsWith(Word::commit) && phrases.endsWith(Word::transfer));
}

bool isCaption(const Label& label) {
    return label.phrases.isAll(Word::due) || label.phrases.isAll(Word::money);
}

// A cross at the top closes it, and nothing else is beside the cross.
bool isSheet(const WideScreen& screen) {
    constexpr std::string_view kCrosses[] = {"✕", "×", "✖", "✗", "X", "x"};
    return std::ranges::any_of(screen.labels(), [&](const Label& cross) {
        if (std::ranges::find(kCrosses, cross.text) == std::end(kCrosses)) return false;
        if (isBelow(cross, kHead, screen)) return false;
        return std::ranges::none_of(screen.labels(), [&](const Label& other) {
            return &other != &cross && besideEachOther(other, cross);
        });
    });
}

// Prices below each other, ending at one edge, as a bill has them.
bool hasPriceColumn(const WideScreen& screen) {
    const double width = screen.frame().width;
    const auto isPrice = [&](const Label& label) {
        return label.amount && label.phrases.words == 0 && label.right > kRightSide * width;
    };
    return std::ranges::any_of(screen.labels(), [&](const Label& first) {
        if (!isPrice(first)) return false;
        const auto count = std::ranges::count_if(screen.labels(), [&](const Label& other) {
            return isPrice(other) && std::abs(other.right - first.right) < kSameEdge * width;
        });
        return count >= static_cast<std::ptrdiff_t>(kLeastPricesInColumn);
    });
}

}  // namespace

bool standsAlone(const Label& label, const WideScreen& screen) {
    bool besideRefusal = false;
    for (const auto& other : screen.labels()) {
        if (&other == &label || !besideEachOther(other, label)) continue;
        if (!other.dismisses()) return false;
        besideRefusal = true;
    }
    return isCentred(label, screen) || besideRefusal;
}

bool standsLikePayButton(const Label& label, const WideScreen& screen) {
    const auto above = [&](const Label& other) { return other.amount && other.top < label.top; };
    return std::ranges::any_of(screen.labels(), above) && standsAlone(label, screen);
}

Verdict standingAmount(const WideScreen& screen) {
    const Label* label = anyButton(screen, kMostStandingWords);
    if (!label || !label->amount || !isBelow(*label, kLowerHalf, screen)) return std::nullopt;
    if (!isCentred(*label, screen) || label->phrases.startsWith(Word::money)) return std::nullopt;
    if (!standsAlone(*label, screen)) return std::nullopt;
    return payButton(label->text);
}

Verdict standingUnits(const WideScreen& screen) {
    const Label* label = screen.taps() ? screen.label() : nullptr;
    if (!label || !label->mayBeButton() || label->dismisses()) return std::nullopt;
    const auto& phrases = label->phrases;
    if (phrases.words > kMostUnitWords || !phrases.contains(Word::unit)) return std::nullopt;
    // "80コインで読む": where verbs come last, one of reading says what the coins are for.
    const bool sum = phrases.dense && isAsciiDigit(label->plain.front());
    if (!has(Rule::numeric, label->plain) || (!sum && label->isHarmless()) || label->isSoft()) {
        return std::nullopt;
    }
    if (!isBelow(*label, kLowerHalf, screen) || !isCentred(*label, screen)) return std::nullopt;
    if (!standsAlone(*label, screen)) return std::nullopt;
    return payButton(label->text);
}

Verdict standingLongLabel(const WideScreen& screen) {
    const Label* label = anyButton(screen, kMostLongWords);
    if (!label || label->phrases.words < kLeastLongWords) return std::nullopt;
    const auto& phrases = label->phrases;
    if (phrases.contains(Word::speech) && !phrases.startsWith(Word::commit) &&
        !phrases.endsWith(Word::pay)) {
        return std::nullopt;
    }
    if (!isBelow(*label, kFoot, screen) || !standsLikePayButton(*label, screen)) {
        return std::nullopt;
    }
    const auto speaks = {Word::pay,      Word::payStart, Word::buy,
                         Word::transfer, Word::object,   Word::consent};
    const auto contains = [&](Word kind) { return phrases.contains(kind); };
    if (std::ranges::none_of(speaks, contains)) return std::nullopt;
    return onPayment(label->text, screen);
}

Verdict buttonUnderSum(const WideScreen& screen) {
    const Label* label = anyButton(screen, kMostCommitWords);
    if (!label || screen.isSettled() || screen.amounts() > kMostAmountsOfOne ||
        isIdle(*label, screen)) {
        return std::nullopt;
    }
    if (!isBelow(*label, kFoot, screen) || !standsLikePayButton(*label, screen)) {
        return std::nullopt;
    }
    const auto isPrice = [](const Label& other) {
        return other.amount && other.phrases.words == 0;
    };
    if (std::ranges::none_of(screen.labels(), isPrice)) return std::nullopt;
    return onPayment(label->text, screen);
}

Verdict buttonOfPayment(const WideScreen& screen) {
    const Label* label = anyButton(screen, kMostCommitWords);
    if (!label || isIdle(*label, screen) || isCaption(*label)) return std::nullopt;
    const bool paid =
        screen.isDue() || screen.hasCaption() || screen.isClearlyDue() || screen.isClearOffer();
    if (!sellsOrSends(*label, screen) && (!paid || screen.isSettled())) return std::nullopt;
    if (!standsLikePayButton(*label, screen)) return std::nullopt;
    return onPayment(label->text, screen);
}

Verdict underPrices(const WideScreen& screen) {
    const Label* label = anyButton(screen, kMostBarWords);
    if (!label || screen.isSettled() || isIdle(*label, screen) || isCaption(*label) ||
        !isBelow(*label, kFoot, screen))
        return std::nullopt;
    if (!hasPriceColumn(screen) || !standsLikePayButton(*label, screen)) return std::nullopt;
    return onPayment(label->text, screen);
}

Verdict amountBar(const WideScreen& screen) {
    const Label* label = anyButton(screen, kMostBarWords);
    if (!label || screen.isSettled() || isIdle(*label, screen) || !isBelow(*label, kFoot, screen))
        return std::nullopt;
    bool besideAmount = false;
    for (const auto& other : screen.labels()) {
        if (&other == label) continue;
        const double reach = kBarRow * other.height();
        if (other.bottom + reach <= label->top || other.top - reach >= label->bottom) continue;
        if (besideEachOther(other, *label) && other.left >= label->right) return std::nullopt;
        besideAmount = besideAmount || (other.amount && other.right <= label->left &&
                                        isBelow(other, kFoot, screen));
    }
    if (!besideAmount) return std::nullopt;
    return onPayment(label->text, screen);
}

Verdict upsell(const WideScreen& screen) {
    const Label* label = anyButton(screen, kMostCommitWords);
    if (!label || screen.isSettled() || !isCentred(*label, screen)) return std::nullopt;
    if (!isBelow(*label, kFoot, screen) || !standsLikePayButton(*label, screen)) {
        return std::nullopt;
    }
    const auto refusal = [&](const Label& other) {
        const bool below = other.top > label->bottom &&
                           other.top - label->bottom < kRefusalNear * screen.frame().height;
        return below && isCentred(other, screen) &&
               (other.dismisses() || other.phrases.startsWith(Word::dismiss) ||
                other.phrases.endsWith(Word::dismiss));
    };
    const bool refused = std::ranges::any_of(screen.labels(), refusal);
    if (!(refused && screen.amounts() >= kLeastPricesOfUpsell) && !isSheet(screen)) {
        return std::nullopt;
    }
    return onPayment(label->text, screen);
}

}  // namespace tandrel::PaymentGuard
