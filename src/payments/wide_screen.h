#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "payments/guard_words.h"
#include "payments/payment_guard.h"

// One screen and one action as the wider rules see them.
namespace tandrel::PaymentGuard {

// A text that may be a button.
struct Label {
    std::string text;           // as on the screen
    std::string plain;          // its compatibility forms made plain
    std::string withoutAmount;  // that, without its amounts
    std::optional<std::string> amount;
    Phrases phrases;  // of the text without its amounts
    double top = 0;   // pixels; where the text is
    double bottom = 0;
    double left = 0;
    double right = 0;

    double height() const { return bottom - top; }
    // Short enough for a button, no address, no question and nothing said to somebody.
    bool mayBeButton() const;
    // It alone would pay, on whatever screen it is.
    bool pays() const;
    // It pays where an amount is on the screen.
    bool buys() const;
    // Its button pays nothing: "Cancel", "Order history".
    bool dismisses() const;
    // "Order total", "Fee": an amount beside it is about to be paid.
    bool isDueCaption() const;
    // It is what a number or an amount is called by.
    bool isNamed() const;
    // It begins or ends like a button that pays nothing: "View order", "Sendung verfolgen".
    bool isHarmless() const;
    // So does it, unless much speaks of paying: "Open channel" pays, "Open in Maps" does not.
    bool isSoft() const;
    // It begins with an open circle or square, as a thing to tick off does.
    bool isToDo() const;
    // "PIN", and not "Promo code".
    bool asksSecret() const;
    double middle() const { return (left + right) / 2; }
};

class WideScreen {
 public:
    WideScreen(const std::vector<Line>& lines, FrameSize frame, const Action& action,
               const GuardWords& words);

    const std::vector<Label>& labels() const { return labels_; }
    const Action& action() const { return action_; }
    const std::vector<Line>& lines() const { return lines_; }
    FrameSize frame() const { return frame_; }
    const GuardWords& words() const { return words_; }

    // The lines under the point, smallest first.
    const std::vector<const Label*>& hit() const { return hit_; }
    // The smallest of them; none for a spot without text.
    const Label* label() const { return hit_.empty() ? nullptr : hit_.front(); }
    // The label together with the line above it, the line below it and both, where they stand like
    // the lines of one button.
    std::vector<Label> joinedLabels() const;
    Label makeLabel(const std::string& text) const;

    bool taps() const;
    // Pixels; the point of a tap, where it has one.
    std::optional<double> x() const;
    std::optional<double> y() const;

    const std::optional<std::string>& amount() const { return amount_; }
    // " showing " and the first amount, or nothing.
    std::string shown() const { return amount_ ? " showing " + *amount_ : ""; }
    std::size_t amounts() const { return amounts_; }
    // A short line is, or begins with, a caption by which an amount is a payment.
    bool hasCaption() const { return caption_; }
    // One by which an amount is about to be paid, and nothing that says it is paid already.
    bool isDue() const { return due_ && !settled_; }
    bool isSettled() const { return settled_; }
    // By words that say so, and not only because it lists money that is there.
    bool isDone() const { return done_; }
    // Two captions of what is about to be paid, or a sentence that says that the button pays, or
    // the end of a card's number.
    bool isClearlyDue() const { return !settled_ && (dueCaptions_ > 1 || consent_ || card_); }
    bool has(Word kind) const;
    // Something is paid here: a button that pays beside an amount, a slider that pays, or a secret
    // asked for beside an amount and a caption.
    bool isPayment() const { return payment_; }
    // A subscription or a trial is offered at a price.
    bool isOffer() const { return offer_; }
    // By more words than a sentence about one takes.
    bool isClearOffer() const { return clearOffer_; }

 private:
    void joinAmounts();
    void nameBareAmounts();
    void findHit();
    void judge();
    void judgePaying();
    void judgeOffer();
    static bool captions(const Label& label);

    const std::vector<Line>& lines_;
    const FrameSize frame_;
    const Action action_;
    const GuardWords& words_;
    std::vector<Label> labels_;
    std::vector<const Label*> hit_;
    std::optional<std::string> amount_;
    std::size_t amounts_ = 0;
    bool caption_ = false;
    int dueCaptions_ = 0;
    bool due_ = false;
    bool settled_ = false;
    bool done_ = false;
    bool consent_ = false;
    bool card_ = false;
    bool payment_ = false;
    bool offer_ = false;
    bool clearOffer_ = false;
};

}  // namespace tandrel::PaymentGuard
