#include "payments/question_history.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

class Questions : public testing::Test {
 protected:
    using Subject = QuestionHistory::Subject;

    static Subject subject(std::vector<std::string> texts) {
        return {.what = "tap Pay", .payment = "a=€5", .texts = std::move(texts)};
    }

    const Subject till_ = subject({"9:41", "Till", "Total €5", "Pay"});
    TimePoint now_{};
    QuestionHistory history_{10};
};

TEST_F(Questions, AScreenIsTheSameWithHalfOfItsTexts) {
    history_.denied(till_, "no", now_);
    EXPECT_TRUE(history_.refusal(subject({"9:42", "Tii", "Total €5", "Pay"}), now_));
    EXPECT_TRUE(history_.refusal(subject({"Pay", "Total €5", "Till", "9:41"}), now_));
    EXPECT_FALSE(history_.refusal(subject({"9:42", "Bar", "Sum €5", "Pay"}), now_));
    // One text many times over is no other's likeness.
    EXPECT_FALSE(history_.refusal(subject({"Pay", "Pay", "Pay", "Pay"}), now_));
    EXPECT_FALSE(history_.refusal(subject({}), now_));
}

TEST_F(Questions, ManyDenialsForgetTheOldestOnly) {
    history_.denied(till_, "oldest", now_);
    for (int i = 0; i < 32; ++i) {
        Subject one = till_;
        one.payment = std::to_string(i);
        history_.denied(one, one.payment, now_);
    }
    EXPECT_FALSE(history_.refusal(till_, now_));
    Subject first = till_;
    first.payment = "0";
    EXPECT_EQ(history_.refusal(first, now_), "0");
}

}  // namespace
}  // namespace tandrel
