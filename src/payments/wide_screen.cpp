#include "payments/wide_screen.h"

#include <algorithm>
#include <cmath>

#include "base/ascii.h"
#include "base/unicode.h"
#include "payments/folded_text.h"
#include "payments/guard_patterns.h"

namespace tandrel::PaymentGuard {
namespace {

constexpr std::size_t kLongestButton = 60;  // bytes for most scripts; twice that for others
constexpr std::size_t kMostButtonWords = 7;
constexpr std::size_t kMostCaptionWords = 5;
constexpr int kLeastOfferWords = 2;
constexpr int kLeastDueBesideOverview = 2;  // captions
constexpr double kLineGap = 0.9;            // of a line's height, between two lines of one button
constexpr double kSameHeight = 1.6;         // between two lines of one button

const Regex& sentence() {
    static const Regex rule(R"([?;…]|[.!]\s+\p{L}|://|^\S+\.\S+/|@)", Regex::Case::sensitive);
    return rule;
}

// More words than these with a comma are a sentence: "Yes, send it" is none.
constexpr std::size_t kMostWordsWithComma = 4;

// The end of a card's or an account's number, as a shop shows the one that it will charge.
const Regex& cardEnding() {
    static const Regex rule(
        R"([•●∙·*.]{2,}\s?\d{4}\b|\b(visa|mastercard|amex|maestro|card|debit)\W+\d{4}\b)",
        Regex::Case::insensitive);
    return rule;
}

// "•••• 2209": only such texts are worth the look.
bool hasFourDigits(std::string_view text) {
    int run = 0;
    for (const char c : text) {
        run = isAsciiDigit(c) ? run + 1 : 0;
        if (run == 4) return true;
    }
    return false;
}

bool standLikeOneButton(const Label& upper, const Label& lower, double width) {
    const double height = std::min(upper.height(), lower.height());
    const double gap = lower.top - upper.bottom;
    if (height <= 0 || gap < -0.3 * height || gap > kLineGap * height) return false;
    if (std::max(upper.height(), lower.height()) > kSameHeight * height) return false;
    const double middles = std::abs((upper.left + upper.right) - (lower.left + lower.right)) / 2;
    return middles <= 0.03 * width;
}

// "$0.00"
bool isNothing(std::string_view amount) {
    return amount.contains('0') && amount.find_first_of("123456789") == amount.npos;
}

// The part ends within a word of the text, as a currency that only begins a longer word.
bool cutsWord(const std::string& text, const std::string& part) {
    static const Regex endsInLetter(R"(\p{L}$)", Regex::Case::sensitive);
    static const Regex beginsWithLetter(R"(^\p{L})", Regex::Case::sensitive);
    const auto at = text.find(part);
    if (at == std::string::npos) return true;
    return endsInLetter.has(part) && beginsWithLetter.has(text.substr(at + part.size()));
}

Label joinedLabel(const WideScreen& screen, const std::vector<const Label*>& parts) {
    std::string text;
    for (const Label* part : parts) text += (text.empty() ? "" : " ") + part->text;
    Label label = screen.makeLabel(text);
    label.top = parts.front()->top;
    label.bottom = parts.back()->bottom;
    label.left = parts.front()->left;
    label.right = parts.front()->right;
    return label;
}

}  // namespace

bool Label::mayBeButton() const {
    if (phrases.words > kMostButtonWords || text.size() > 2 * kLongestButton) return false;
    if (text.size() > kLongestButton && graphemeCount(text) > kLongestButton) return false;
    const bool button = phrases.isAll(Word::pay) || phrases.isAll(Word::commit);
    if (phrases.words >= 2 && phrases.contains(Word::speech) && !button) return false;
    if (phrases.words > kMostWordsWithComma && withoutAmount.contains(',')) return false;
    return !isToDo() && !sentence().has(withoutAmount);
}

bool Label::pays() const {
    return (phrases.isAll(Word::pay) || phrases.startsWith(Word::payStart)) && !dismisses() &&
           mayBeButton();
}

bool Label::buys() const {
    if (!mayBeButton() || dismisses() || isNamed()) return false;
    if (pays() || phrases.startsWith(Word::buy) || phrases.startsWith(Word::pay)) return true;
    if (phrases.endsWith(Word::pay) || (phrases.dense && phrases.endsWith(Word::buy))) return true;
    if (phrases.endsWith(Word::buyLast) && !isHarmless()) return true;
    return amount && (phrases.endsWith(Word::buy) || phrases.startsWith(Word::transfer) ||
                      phrases.endsWith(Word::transfer) || phrases.startsWith(Word::weakBuy) ||
                      phrases.startsWith(Word::withAmount) ||
                      // "Yes, $45" is said.
                      (phrases.isAll(Word::commit) && !withoutAmount.contains(',')));
}

bool Label::isDueCaption() const {
    // The end of a sentence is none.
    if (dismisses() || text.ends_with('!') || text.ends_with('.')) return false;
    return phrases.startsWith(Word::due) || phrases.isAll(Word::due) ||
           (phrases.words <= 2 && phrases.endsWith(Word::due));
}

// "Order total $5.00" is a caption, "Order 2210" a name, "Sponsor: Nimbus" both.
bool Label::isNamed() const {
    static const Regex numbered(R"(^\W*\p{L}+(\W+\d{3,}|:\s+\p{L}))", Regex::Case::sensitive);
    const bool caption = phrases.isAll(Word::due) && !phrases.isAll(Word::buy) &&
                         !phrases.isAll(Word::pay) && !phrases.isAll(Word::commit);
    return caption || (numbered.has(withoutAmount) && !phrases.contains(Word::unit));
}

bool Label::dismisses() const { return phrases.isAll(Word::dismiss); }

bool Label::isHarmless() const {
    return phrases.startsWith(Word::harmless) || phrases.endsWith(Word::harmlessEnd) ||
           (phrases.dense && phrases.contains(Word::harmlessEnd));
}

bool Label::isSoft() const {
    return phrases.startsWith(Word::soft) || phrases.endsWith(Word::soft) ||
           (phrases.dense && phrases.contains(Word::soft));
}

bool Label::isToDo() const {
    constexpr std::string_view kBullets[] = {"○", "◯", "☐", "□", "▢"};
    return std::ranges::any_of(kBullets, [&](std::string_view bullet) {
        return std::string_view(text).starts_with(bullet);
    });
}

bool Label::asksSecret() const {
    return phrases.contains(Word::passcode) && !phrases.contains(Word::otherCode);
}

WideScreen::WideScreen(const std::vector<Line>& lines, FrameSize frame, const Action& action,
                       const GuardWords& words)
    : lines_(lines), frame_(frame), action_(action), words_(words) {
    labels_.reserve(lines.size());
    for (const auto& line : lines) {
        Label label = makeLabel(line.text);
        label.left = line.x;
        label.right = line.x + line.w;
        label.top = line.y;
        label.bottom = line.y + line.h;
        labels_.push_back(std::move(label));
    }
    joinAmounts();
    nameBareAmounts();
    for (const auto& label : labels_) {
        if (!label.amount || isNothing(*label.amount)) continue;
        ++amounts_;
        if (!amount_) amount_ = label.amount;
    }
    findHit();
    judge();
}

// An amount that a sentence breaks over two lines belongs to the first of them.
void WideScreen::joinAmounts() {
    // Not in a time of day, such as the status bar's.
    static const Regex endsInNumber(R"((?<![:\d])\d[\d.,]*\s*$)", Regex::Case::sensitive);
    for (std::size_t i = 0; i + 1 < labels_.size(); ++i) {
        Label& upper = labels_[i];
        const Label& lower = labels_[i + 1];
        if (upper.amount || lower.amount) continue;
        if (upper.plain.empty() || lower.plain.empty()) continue;
        const bool ends = isAsciiDigit(upper.plain.back()) && endsInNumber.has(upper.plain);
        if (ends == isAsciiDigit(lower.plain.front())) continue;
        const std::string both = upper.plain + " " + lower.plain;
        const auto amount = words_.amount(both);
        if (amount && !cutsWord(both, *amount)) upper.amount = amount;
    }
}

// Where something is to be paid, and no currency is on the screen, a number with two decimals is an
// amount.
void WideScreen::nameBareAmounts() {
    static const Regex bare(R"(^\W*\d{1,3}([., ]?\d{3})*[.,]\d{2}\W*$)", Regex::Case::sensitive);
    const auto priced = [](const Label& label) { return label.amount.has_value(); };
    if (std::ranges::any_of(labels_, priced)) return;
    if (std::ranges::none_of(labels_, &Label::isDueCaption)) return;
    for (auto& label : labels_) {
        if (bare.has(label.plain)) label.amount = trimmed(label.plain);
    }
}

void WideScreen::findHit() {
    const auto px = x();
    const auto py = y();
    if (!taps() || !px || !py) return;
    const double reach = tolerance(frame_);
    for (const auto& label : labels_) {
        if (label.left - reach <= *px && *px <= label.right + reach && label.top - reach <= *py &&
            *py <= label.bottom + reach) {
            hit_.push_back(&label);
        }
    }
    const auto area = [](const Label* l) { return (l->right - l->left) * l->height(); };
    std::ranges::stable_sort(hit_, {}, area);
}

Label WideScreen::makeLabel(const std::string& text) const {
    Label label;
    label.text = text;
    label.plain = plain(text);
    label.amount = words_.amount(label.plain);
    label.withoutAmount = label.amount ? words_.withoutAmounts(label.plain) : label.plain;
    label.phrases = words_.find(folded(label.withoutAmount));
    return label;
}

std::vector<Label> WideScreen::joinedLabels() const {
    std::vector<Label> result;
    const Label* middle = label();
    if (!middle) return result;
    const Label* above = nullptr;
    const Label* below = nullptr;
    for (const auto& other : labels_) {
        if (standLikeOneButton(other, *middle, frame_.width)) above = &other;
        if (!below && standLikeOneButton(*middle, other, frame_.width)) below = &other;
    }
    if (above) result.push_back(joinedLabel(*this, {above, middle}));
    if (below) result.push_back(joinedLabel(*this, {middle, below}));
    if (above && below) result.push_back(joinedLabel(*this, {above, middle, below}));
    return result;
}

bool WideScreen::taps() const { return action_.kind == Kind::tap || action_.isTinySwipe(); }

std::optional<double> WideScreen::x() const {
    if (!action_.x || !(frame_.width > 0)) return std::nullopt;
    return *action_.x * frame_.width;
}

std::optional<double> WideScreen::y() const {
    if (!action_.y || !(frame_.height > 0)) return std::nullopt;
    return *action_.y * frame_.height;
}

bool WideScreen::has(Word kind) const {
    return std::ranges::any_of(labels_,
                               [&](const Label& label) { return label.phrases.contains(kind); });
}

// Whether the label is, or begins with, a caption by which an amount is a payment.
bool WideScreen::captions(const Label& label) {
    if (label.phrases.words > kMostCaptionWords || label.phrases.contains(Word::speech))
        return false;
    return !label.dismisses() &&
           (label.phrases.startsWith(Word::money) || label.phrases.isAll(Word::money) ||
            (label.phrases.words == 1 && label.phrases.isAll(Word::captionAlone)));
}

void WideScreen::judgePaying() {
    bool paying = false;
    bool slider = false;
    bool secret = false;
    for (const auto& label : labels_) {
        paying = paying || label.pays() || (label.amount && label.buys());
        slider = slider || label.phrases.contains(Word::slide);
        secret = secret || (label.phrases.words <= kMostCaptionWords && label.asksSecret());
    }
    payment_ = slider || (paying && amount_) || (secret && amount_ && caption_);
}

void WideScreen::judgeOffer() {
    int offers = 0;  // that many words which speak of one
    for (const auto& label : labels_) {
        const bool offer = label.phrases.contains(Word::offer);
        const bool hint = label.phrases.contains(Word::offerHint);
        const bool priced = label.amount.has_value();
        // A price a month alone is a salary, a rent or a tariff just as well.
        if (offer || hint) offers += offer && (hint || priced) ? 2 : 1;
    }
    offer_ = offers >= kLeastOfferWords && amount_;
    clearOffer_ = offers > kLeastOfferWords && amount_;
}

void WideScreen::judge() {
    const auto begins = [](const Phrases& phrases, Word kind) {
        return phrases.words <= kMostCaptionWords &&
               (phrases.startsWith(kind) || phrases.isAll(kind));
    };
    bool overview = false;
    for (const auto& label : labels_) {
        const auto& phrases = label.phrases;
        caption_ = caption_ || captions(label);
        if (phrases.words <= kMostCaptionWords && label.isDueCaption() &&
            (phrases.isAll(Word::due) ||
             (!phrases.contains(Word::speech) && label.mayBeButton()))) {
            ++dueCaptions_;
        }
        settled_ = settled_ || begins(phrases, Word::settled) ||
                   (phrases.words <= kMostCaptionWords && phrases.endsWith(Word::settled));
        overview = overview || begins(phrases, Word::overview);
        consent_ = consent_ || phrases.contains(Word::consent);
        card_ = card_ || (hasFourDigits(label.plain) && cardEnding().has(label.plain));
    }
    done_ = settled_;
    settled_ = settled_ || (overview && dueCaptions_ < kLeastDueBesideOverview && !consent_);
    due_ = dueCaptions_ > 0 || consent_;
    judgePaying();
    judgeOffer();
}

}  // namespace tandrel::PaymentGuard
