#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "base/clock.h"

namespace tandrel {

// What the owner was asked lately, so that an assistant can neither repeat a denied question nor
// wear the owner down. Not thread-safe: used by whoever has the gate's turn.
class QuestionHistory {
 public:
    // One question: the action in words, what identifies the payment, and the screen's texts.
    struct Subject {
        std::string what;
        std::string payment;
        std::vector<std::string> texts;
    };

    // `most` questions within ten minutes make each further one wait for a minute after the last.
    explicit QuestionHistory(std::size_t most) : most_(most) {}

    void asked(TimePoint now);
    void denied(Subject subject, std::string refusal, TimePoint now);

    // The refusal that the same action got on the same screen within the last two minutes. Screens
    // are the same when they show the same payment and share most of their texts: a clock or a
    // letter read otherwise makes no other screen.
    std::optional<std::string> refusal(const Subject& subject, TimePoint now);
    // Whether the next question must wait now.
    bool mustWait(TimePoint now);
    // The questions of the last ten minutes, as far as they are kept: at most `most`.
    std::size_t lately(TimePoint now);
    std::size_t most() const { return most_; }

 private:
    struct Denial {
        Subject subject;
        std::string refusal;
        TimePoint at;
    };

    const std::size_t most_;
    std::deque<TimePoint> asked_;
    std::deque<Denial> denials_;
};

}  // namespace tandrel
