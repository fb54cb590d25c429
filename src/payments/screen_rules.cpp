#include "payments/screen_rules.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <fmt/format.h>

#include "base/unicode.h"
#include "payments/guard_patterns.h"
#include "payments/standing_rules.h"

namespace tandrel::PaymentGuard {
namespace {

constexpr std::size_t kMostVerbWords = 5;  // of a button that begins with a verb
constexpr double kBesideAmount = 0.16;     // of the frame's height
constexpr double kBand = 1.2;              // of a line's height, above and below a pay button
constexpr double kNavigationBar = 0.11;    // of the frame's height
constexpr double kTitle = 0.17;            // where it ends, its large title included
constexpr double kTabBar = 0.9;            // where it begins
constexpr std::size_t kMostAmountsBesideIcon = 3;
constexpr std::size_t kMostAmountsBesideSecret = 2;
constexpr double kTurned = 1.5;  // a line so much higher than wide runs downwards
constexpr int kLeastTurnedLines = 3;

// "Submit refill order", "Send gift card": a word that commits, and what it is about.
bool commitsToPaying(const Label& label) {
    const auto& phrases = label.phrases;
    return label.mayBeButton() && phrases.words <= kMostCommitWords && !label.dismisses() &&
           (phrases.startsWith(Word::commit) || phrases.startsWith(Word::transfer)) &&
           (phrases.contains(Word::buy) || phrases.contains(Word::pay) ||
            phrases.contains(Word::money));
}

// A sentence about paying an amount, on one line or broken over up to three.
bool saysItPays(const WideScreen& screen) {
    const auto& labels = screen.labels();
    const auto speaks = [](const Phrases& phrases) {
        return phrases.contains(Word::pay) || phrases.contains(Word::buy) ||
               phrases.contains(Word::money) || phrases.contains(Word::transfer) ||
               phrases.contains(Word::offer);
    };
    for (std::size_t i = 0; i < labels.size(); ++i) {
        if (!labels[i].amount) continue;
        const std::size_t from = i > 0 ? i - 1 : 0;
        const std::size_t to = std::min(labels.size(), i + 2);
        for (std::size_t j = from; j < to; ++j) {
            if (!labels[j].dismisses() && speaks(labels[j].phrases)) return true;
        }
    }
    return false;
}

// The swipe runs along the label, and the label alone says nothing of refusing.
bool isSwiped(const Label& label, const WideScreen& screen) {
    const auto y = screen.y();
    if (!y || screen.isSettled() || label.isHarmless() || label.dismisses()) return false;
    if (label.phrases.endsWith(Word::dismiss)) return false;
    const double reach = kBand * label.height();
    return label.top - reach <= *y && *y <= label.bottom + reach;
}

// An arrow or a cross in the bar at the top.
bool leadsBack(const Label& label, const WideScreen& screen) {
    constexpr std::string_view kArrows[] = {"‹", "<", "←", "〈", "✕", "×", "⋯", "…", "..."};
    return std::ranges::find(kArrows, label.text) != std::end(kArrows) &&
           label.bottom < kTitle * screen.frame().height;
}

// Nothing but one sum, and no word of signing in beside it.
bool asksForOneSum(const WideScreen& screen) {
    return screen.amounts() <= kMostAmountsBesideSecret && !screen.isSettled() &&
           !screen.has(Word::otherCode);
}

// A tap on the label itself would be asked about for what it is or where it stands.
bool asksInTheMiddle(const Label& label, const WideScreen& screen) {
    constexpr Verdict (*kRules[])(const WideScreen&) = {
        offer,          buyingVerb,    commitWithCaption, buttonOfPayment,
        standingAmount, standingUnits, buttonUnderSum,    underPrices};
    if (!screen.amount() || label.top < 0.5 * screen.frame().height) return false;
    if (!standsAlone(label, screen)) return false;
    const Action middle{.x = label.middle() / screen.frame().width,
                        .y = (label.top + label.bottom) / 2 / screen.frame().height};
    const WideScreen moved(screen.lines(), screen.frame(), middle, screen.words());
    return std::ranges::any_of(kRules, [&](auto rule) { return rule(moved).has_value(); });
}

}  // namespace

Verdict verbAndObject(const WideScreen& screen) {
    if (!screen.taps() || !screen.amount()) return std::nullopt;
    for (const Label* label : screen.hit()) {
        const auto& phrases = label->phrases;
        if (!label->mayBeButton() || label->dismisses() || label->isHarmless()) continue;
        if (phrases.words > kMostVerbWords || !phrases.contains(Word::object)) continue;
        const auto acts = [&](Word kind) {
            // A verb and its object stand in either order; one word cannot be both.
            return phrases.dense ? phrases.contains(kind)
                                 : (phrases.startsWith(kind) && phrases.goesOnWith(Word::object)) ||
                                       (phrases.endsWith(kind) && phrases.startsWith(Word::object));
        };
        if (phrases.words < 2 && !phrases.dense) continue;
        if (acts(Word::commit) || acts(Word::transfer) || acts(Word::withAmount)) {
            return onPayment(label->text, screen);
        }
    }
    return std::nullopt;
}

Verdict buyingVerb(const WideScreen& screen) {
    if (!screen.taps() || !screen.amount()) return std::nullopt;
    for (const Label* label : screen.hit()) {
        if (label->phrases.words <= kMostVerbWords && label->buys() && !isEntry(*label, screen) &&
            (label->pays() || !isListed(*label, screen))) {
            return onPayment(label->text, screen);
        }
    }
    return std::nullopt;
}

Verdict verbBesideAmount(const WideScreen& screen) {
    const Label* label = screen.taps() ? screen.label() : nullptr;
    if (!label || !label->mayBeButton() || label->dismisses()) return std::nullopt;
    if (label->phrases.words > kMostVerbWords) return std::nullopt;
    if (!label->phrases.startsWith(Word::weakBuy) && !label->phrases.isAll(Word::weakBuy)) {
        return std::nullopt;
    }
    const double reach = kBesideAmount * screen.frame().height;
    for (const auto& other : screen.labels()) {
        if (!other.amount || other.phrases.contains(Word::speech)) continue;
        if (std::abs(other.top - label->top) <= reach) return onPayment(label->text, screen);
    }
    return std::nullopt;
}

Verdict longLabel(const WideScreen& screen) {
    if (!screen.taps() || !screen.amount()) return std::nullopt;
    for (const Label* label : screen.hit()) {
        const auto& phrases = label->phrases;
        if (phrases.words > kMostLongWords || phrases.contains(Word::speech)) continue;
        if (label->isToDo()) continue;
        if (label->dismisses() || label->text.ends_with('.')) continue;
        if (label->amount ? phrases.startsWith(Word::pay) : phrases.startsWith(Word::payStart)) {
            return onPayment(label->text, screen);
        }
        if (screen.hasCaption() && phrases.startsWith(Word::pay)) {
            return onPayment(label->text, screen);
        }
    }
    return std::nullopt;
}

Verdict offer(const WideScreen& screen) {
    const Label* label = screen.taps() ? screen.label() : nullptr;
    if (!screen.isOffer() || !label || !label->mayBeButton()) return std::nullopt;
    if (label->dismisses() || label->isHarmless()) return std::nullopt;
    const auto& phrases = label->phrases;
    if (phrases.words > kMostCommitWords) return std::nullopt;
    const double middle = (label->left + label->right) / 2 / screen.frame().width;
    const bool lowAndCentred = std::abs(middle - 0.5) < kCentred &&
                               label->top > 0.6 * screen.frame().height &&
                               label->right - label->left < 0.6 * screen.frame().width;
    if (commits(*label) || phrases.startsWith(Word::weakBuy) || phrases.startsWith(Word::buy) ||
        phrases.startsWith(Word::commit) || phrases.isAll(Word::offer) || lowAndCentred ||
        (screen.isClearOffer() && standsLikePayButton(*label, screen))) {
        return onPayment(label->text, screen);
    }
    return std::nullopt;
}

Verdict commitWithCaption(const WideScreen& screen) {
    if (!screen.taps() || !screen.amount() || !screen.hasCaption() || screen.isSettled()) {
        return std::nullopt;
    }
    for (const Label* label : screen.hit()) {
        if (isEntry(*label, screen)) continue;
        if (commits(*label) || commitsToPaying(*label)) return onPayment(label->text, screen);
    }
    return std::nullopt;
}

Verdict dialog(const WideScreen& screen) {
    const Label* label = screen.taps() ? screen.label() : nullptr;
    if (!label || !commits(*label)) return std::nullopt;
    const auto dismisses = [](const Label& other) { return other.dismisses(); };
    if (!std::ranges::any_of(screen.labels(), dismisses) || !saysItPays(screen)) {
        return std::nullopt;
    }
    return onPayment(label->text, screen);
}

Verdict paymentScreenTap(const WideScreen& screen) {
    if (!screen.taps() || !screen.isPayment()) return std::nullopt;
    const Label* label = screen.label();
    if (!label) return unlabelled(screen);
    if (label->dismisses() || leadsBack(*label, screen)) return std::nullopt;
    if (commits(*label) || graphemeCount(label->text) <= 2) return onPayment(label->text, screen);
    return std::nullopt;
}

Verdict payBand(const WideScreen& screen) {
    const auto y = screen.y();
    if (!screen.taps() || screen.label() || !y) return std::nullopt;
    for (const auto& label : screen.labels()) {
        const double reach = kBand * label.height();
        if (*y < label.top - reach || label.bottom + reach < *y) continue;
        if (isPayButton(label) || asksInTheMiddle(label, screen)) return unlabelled(screen);
    }
    return std::nullopt;
}

Verdict iconBesideAmount(const WideScreen& screen) {
    const auto x = screen.x();
    const auto y = screen.y();
    if (!screen.taps() || screen.label() || !x || !y) return std::nullopt;
    if (screen.amounts() > kMostAmountsBesideIcon || !screen.hasCaption()) return std::nullopt;
    if (*y < kNavigationBar * screen.frame().height) return std::nullopt;
    for (const auto& label : screen.labels()) {
        const double reach = label.height();
        if (label.amount && label.right < *x && label.top - reach <= *y &&
            *y <= label.bottom + reach) {
            return unlabelled(screen);
        }
    }
    return std::nullopt;
}

Verdict iconAlone(const WideScreen& screen) {
    const auto y = screen.y();
    if (!screen.taps() || screen.label() || !y || !screen.amount() || !screen.isDue()) {
        return std::nullopt;
    }
    if (screen.amounts() > kMostAmountsBesideIcon) return std::nullopt;
    const double height = screen.frame().height;
    if (*y < kNavigationBar * height) return std::nullopt;
    // Where texts stand, it may be one of a row of tabs.
    const auto isTab = [&](const Label& label) { return label.bottom > kTabBar * height; };
    if (*y > kTabBar * height && std::ranges::any_of(screen.labels(), isTab)) return std::nullopt;
    bool below = false;
    for (const auto& label : screen.labels()) {
        // In the bar at the top such a word is the screen's title: "Überweisung".
        const bool title = label.bottom < kTitle * height;
        if (!title && !label.isDueCaption() && label.mayBeButton() &&
            (commits(label) || isPayButton(label))) {
            return std::nullopt;
        }
        below = below || (label.amount && label.bottom < *y);
    }
    if (!below) return std::nullopt;
    return unlabelled(screen);
}

Verdict tipShare(const WideScreen& screen) {
    static const Regex share(R"(^\W*(\d{1,2}([.,]\d)?\s?[%٪]|[%٪]\s?\d{1,2})\W*$)",
                             Regex::Case::sensitive);
    if (!screen.taps() || !screen.has(Word::tip)) return std::nullopt;
    for (const Label* label : screen.hit()) {
        if (share.has(trimmed(label->withoutAmount))) return onPayment(label->text, screen);
    }
    return std::nullopt;
}

Verdict slider(const WideScreen& screen) {
    if (screen.action().kind != Kind::swipe || screen.taps()) return std::nullopt;
    for (const auto& label : screen.labels()) {
        const bool slides =
            label.phrases.contains(Word::slide) ||
            (label.phrases.contains(Word::slideVerb) &&
             (screen.isClearlyDue() || (screen.amount() && isSwiped(label, screen))));
        if (!slides) continue;
        return fmt::format("a \"{}\" control{}", label.text,
                           screen.amount() ? " for " + *screen.amount() : "");
    }
    return std::nullopt;
}

Verdict enterKey(const WideScreen& screen) {
    const Action& action = screen.action();
    const bool enters = action.kind == Kind::enter ||
                        (action.kind == Kind::type &&
                         action.text.value_or("").find_first_of("\r\n") != std::string::npos);
    if (!enters || !screen.isPayment()) return std::nullopt;
    return "Enter on a payment screen" + screen.shown();
}

Verdict secret(const WideScreen& screen) {
    const Action& action = screen.action();
    const auto asks = [](const Label& label) { return label.asksSecret(); };
    if (!screen.amount() || !std::ranges::any_of(screen.labels(), asks)) return std::nullopt;
    const Label* button = screen.taps() ? screen.label() : nullptr;
    if (button && button->phrases.isAll(Word::commit) && saysItPays(screen)) {
        return onPayment(button->text, screen);
    }
    if (!screen.hasCaption() && !screen.isPayment() && !asksForOneSum(screen)) {
        return std::nullopt;
    }
    if (action.kind == Kind::type && has(Rule::numeric, action.text.value_or(""))) {
        return "typing a passcode on a payment screen";
    }
    const Label* label = screen.taps() ? screen.label() : nullptr;
    if (label && graphemeCount(label->text) == 1 && has(Rule::numeric, label->text)) {
        return onPayment(label->text, screen);
    }
    return std::nullopt;
}

Verdict turned(const WideScreen& screen) {
    if (!screen.taps()) return std::nullopt;
    const auto runsDown = [](const Label& label) {
        return label.height() > kTurned * (label.right - label.left);
    };
    if (std::ranges::count_if(screen.labels(), runsDown) < kLeastTurnedLines) return std::nullopt;
    int down = 0;
    int across = 0;
    bool money = screen.amount().has_value();
    for (const auto& label : screen.labels()) {
        if (graphemeCount(label.text) < 4) continue;
        ++(runsDown(label) ? down : across);
        money = money || label.pays();
    }
    if (!money || down < kLeastTurnedLines || across > down) return std::nullopt;
    const Label* label = screen.label();
    if (label && label->dismisses()) return std::nullopt;
    return label ? onPayment(label->text, screen) : unlabelled(screen);
}

}  // namespace tandrel::PaymentGuard
