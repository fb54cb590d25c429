#include "payments/wider_rules.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <fmt/format.h>

#include "base/unicode.h"
#include "payments/folded_text.h"
#include "payments/guard_patterns.h"

namespace tandrel::PaymentGuard {
namespace {

using Verdict = std::optional<std::string>;

constexpr std::size_t kMostVerbWords = 5;   // of a button that begins with a verb
constexpr std::size_t kMostLongWords = 14;  // of a button in more words than a button has
constexpr std::size_t kMostCommitWords = 5;
constexpr double kBesideAmount = 0.16;   // of the frame's height
constexpr double kBand = 1.2;            // of a line's height, above and below a pay button
constexpr double kNavigationBar = 0.11;  // of the frame's height
constexpr std::size_t kMostAmountsBesideIcon = 3;
constexpr double kTurned = 1.5;  // a line so much higher than wide runs downwards
constexpr int kLeastTurnedLines = 3;

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
        if (label->amount && label->buys()) return payButton(label->text);
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

Verdict buyingVerb(const WideScreen& screen) {
    if (!screen.taps() || !screen.amount()) return std::nullopt;
    for (const Label* label : screen.hit()) {
        if (label->phrases.words <= kMostVerbWords && label->buys()) {
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
    if (!screen.isOffer() || !label || !label->mayBeButton() || label->dismisses()) {
        return std::nullopt;
    }
    const auto& phrases = label->phrases;
    if (phrases.words > kMostCommitWords) return std::nullopt;
    const double middle = (label->left + label->right) / 2 / screen.frame().width;
    const bool lowAndCentred = std::abs(middle - 0.5) < 0.06 &&
                               label->top > 0.6 * screen.frame().height &&
                               label->right - label->left < 0.6 * screen.frame().width;
    if (commits(*label) || phrases.startsWith(Word::weakBuy) || phrases.startsWith(Word::buy) ||
        phrases.startsWith(Word::commit) || phrases.isAll(Word::offer) || lowAndCentred) {
        return onPayment(label->text, screen);
    }
    return std::nullopt;
}

Verdict commitWithCaption(const WideScreen& screen) {
    if (!screen.taps() || !screen.amount() || !screen.hasCaption()) return std::nullopt;
    for (const Label* label : screen.hit()) {
        if (commits(*label)) return onPayment(label->text, screen);
    }
    return std::nullopt;
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
    if (label->dismisses()) return std::nullopt;
    if (commits(*label) || graphemeCount(label->text) <= 2) return onPayment(label->text, screen);
    return std::nullopt;
}

Verdict payBand(const WideScreen& screen) {
    const auto y = screen.y();
    if (!screen.taps() || screen.label() || !y) return std::nullopt;
    for (const auto& label : screen.labels()) {
        const double reach = kBand * label.height();
        if (isPayButton(label) && label.top - reach <= *y && *y <= label.bottom + reach) {
            return unlabelled(screen);
        }
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

Verdict tipShare(const WideScreen& screen) {
    static const Regex share(R"(^\W*\d{1,2}([.,]\d)?\s?[%٪]\W*$)", Regex::Case::sensitive);
    if (!screen.taps() || !screen.has(Word::tip)) return std::nullopt;
    for (const Label* label : screen.hit()) {
        if (share.has(trimmed(label->withoutAmount))) return onPayment(label->text, screen);
    }
    return std::nullopt;
}

Verdict slider(const WideScreen& screen) {
    if (screen.action().kind != Kind::swipe || screen.taps()) return std::nullopt;
    for (const auto& label : screen.labels()) {
        if (!label.phrases.contains(Word::slide)) continue;
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
    if (!screen.has(Word::passcode) || !screen.amount()) return std::nullopt;
    if (!screen.hasCaption() && !screen.isPayment()) return std::nullopt;
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
    int down = 0;
    int across = 0;
    bool money = screen.amount().has_value();
    for (const auto& label : screen.labels()) {
        if (graphemeCount(label.text) < 4) continue;
        ++(label.height() > kTurned * (label.right - label.left) ? down : across);
        money = money || label.pays();
    }
    if (!money || down < kLeastTurnedLines || across > down) return std::nullopt;
    const Label* label = screen.label();
    if (label && label->dismisses()) return std::nullopt;
    return label ? onPayment(label->text, screen) : unlabelled(screen);
}

// clang-format off
constexpr WiderRule kRules[] = {
    {"pay-words",
     "a button whose whole text pays, in any language of the word files",
     "the given rules know English words only",
     {"Warenkorb\n> Zahlungspflichtig bestellen"},
     {"Warenkorb\n> Zahlen und Fakten"},
     payWords},
    {"amount-button",
     "a button that holds an amount and a verb that pays, before or after it",
     "a price on the button makes any buying verb a payment",
     {"The Long Crossing\n> Rent $4.99"},
     {"Markets\n> Oil slips to $71.20"},
     amountButton},
    {"bare-amount",
     "a button that is nothing but an amount in a currency that the given rules lack",
     "store buttons are prices",
     {"Tło Premium\n> 19,99 zł"},
     {"Trasa\n> 19,99 km"},
     bareAmount},
    {"unit-button",
     "a verb that buys, with a number of coins, gems or credits",
     "what a game calls gems was bought with money",
     {"Treasure\n> Buy 500 gems"},
     {"Treasure\n> 500 gems collected"},
     unitButton},
    {"every-line",
     "an unmistakable pay button or a price among all lines under the point",
     "a badge or an icon read as a letter is smaller than the button it lies on",
     {"> x\n+ Pay now"},
     {"> x\n+ Pay the plumber on Friday if the boiler works, otherwise wait"},
     everyLine},
    {"split-label",
     "a button that pays when the lines of its text are read together",
     "a narrow button breaks its text",
     {"Cart\n> Place\n_ your order"},
     {"Cart\n> Save\n_ your order"},
     splitLabel},
    {"look-alikes",
     "what the given rules see once letters of other scripts and digits are spelled in Latin",
     "recognition takes o for 0, and a hostile page writes Cyrillic letters on purpose",
     {"Total €5.00\nConfirm\n> C0nfirm"},
     {"Route 66\n> Terminal 2B"},
     lookAlikes},
    {"mirrored",
     "a button that pays when its text is read from behind",
     "a capture device may deliver a mirrored picture",
     {"> won yaP"},
     {"> won eht"},
     mirrored},
    {"buying-verb",
     "a verb that buys at the beginning of a button where an amount is on the screen",
     "shops have more verbs than the given rules",
     {"2 nights, €240 incl. VAT\n> Book now"},
     {"2 nights, €240 incl. VAT\n> Bookings"},
     buyingVerb},
    {"verb-beside-amount",
     "a verb that may mean anything (get, join, start), on a button close to an amount",
     "with the price beside it, it buys",
     {"Puzzle Harbour Pro\n€4.99\n> Get"},
     {"Puzzle Harbour\nOffers in-app purchases\n> Get"},
     verbBesideAmount},
    {"long-label",
     "a button of many words that begins with a verb that pays, where an amount is on the screen",
     "the given rules take more than four words for reading matter",
     {"Total €12.50\n> Pay now the whole amount with my saved Visa card"},
     {"Total €12.50\n> Pay now the whole amount, or pay half of it today."},
     longLabel},
    {"offer",
     "any button but a refusal on a screen that offers a trial or a subscription at a price",
     "a paywall's button says Continue, Let's go or anything else",
     {"7 days free, then $39.99 per year\nCancel anytime\n> Continue"},
     {"7 days free, then $39.99 per year\nCancel anytime\n> Not now"},
     offer},
    {"commit-with-caption",
     "a word that commits, where an amount and a short caption such as Total are on the screen",
     "a checkout's button often says no more than Continue",
     {"Order total\n€31.20\n> Continue"},
     {"Balance\n€31.20\n> Continue"},
     commitWithCaption},
    {"dialog",
     "a word that commits beside a refusal, where a sentence speaks of paying an amount",
     "a system's dialogue asks in a sentence and its button says OK",
     {"Do you want to buy one Season Pass for $9.99?\nCancel\n> OK"},
     {"Petrol now costs $1.80 in the south\nCancel\n> OK"},
     dialog},
    {"payment-screen",
     "a word that commits, one or two characters, or no text at all, on a screen with a pay button",
     "as the given rules do on the payment screens that they know",
     {"Gesamtbetrag 25,00 €\nJetzt bezahlen\n> ✓"},
     {"Gesamtbetrag 25,00 €\nJetzt bezahlen\n> Adresse"},
     paymentScreenTap},
    {"pay-band",
     "a spot without text at the height of a pay button",
     "a button is wider and higher than its text",
     {"Commande\nValider et payer >>"},
     {"Commande\nVoir le panier >>"},
     payBand},
    {"icon-beside-amount",
     "a spot without text right of an amount, where a caption makes it a payment",
     "a button may be an arrow or a tick alone",
     {"Amount due\n€25.00 >>"},
     {"Balance\n€25.00 >>"},
     iconBesideAmount},
    {"tip-share",
     "a percentage where a tip is asked for",
     "a till charges the tip as soon as it is chosen",
     {"Add a tip\n> 18%"},
     {"Battery\n> 18%"},
     tipShare},
    {"slider",
     "a swipe on a screen with a slider that pays, in any words",
     "the given rules know eight verbs of one language",
     {"swipe\nZum Bezahlen wischen"},
     {"swipe\nslide to power off"},
     slider},
    {"enter-key",
     "Return on a screen with a pay button of any language",
     "Return presses the button that is marked",
     {"enter\nTotal 25,00 €\nPagar ahora"},
     {"enter\nTotal 25,00 €\nVer detalles"},
     enterKey},
    {"secret",
     "a digit typed or tapped where a PIN, TAN or password is asked for beside an amount",
     "banks ask for it under many names",
     {"type 4821\nÜberweisung an Ilse Varga\n25,00 €\npushTAN eingeben"},
     {"type 4821\nWillkommen\nPIN eingeben"},
     secret},
    {"turned",
     "any tap but a refusal on a screen that lies on its side and speaks of money",
     "on a turned picture nobody can say what lies where",
     {"| Total €25.00\n| Order summary\n| Your address\n>"},
     {"| Chapter one\n| Chapter two\n| Chapter three\n>"},
     turned},
};
// clang-format on

}  // namespace

std::span<const WiderRule> widerRules() { return kRules; }

}  // namespace tandrel::PaymentGuard
