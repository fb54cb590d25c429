#include "payments/question_history.h"

#include <algorithm>

namespace tandrel {
namespace {

constexpr Duration kDenialHolds = std::chrono::minutes(2);
constexpr Duration kWindow = std::chrono::minutes(10);
constexpr Duration kPause = std::chrono::minutes(1);
constexpr std::size_t kMostDenials = 32;

bool shareMost(std::vector<std::string> one, std::vector<std::string> other) {
    std::ranges::sort(one);
    std::ranges::sort(other);
    std::vector<std::string> both;
    std::ranges::set_intersection(one, other, std::back_inserter(both));
    return 2 * both.size() >= std::max(one.size(), other.size());
}

}  // namespace

void QuestionHistory::asked(TimePoint now) {
    asked_.push_back(now);
    if (asked_.size() > most_) asked_.pop_front();
}

void QuestionHistory::denied(Subject subject, std::string refusal, TimePoint now) {
    denials_.push_back({std::move(subject), std::move(refusal), now});
    if (denials_.size() > kMostDenials) denials_.pop_front();
}

std::optional<std::string> QuestionHistory::refusal(const Subject& subject, TimePoint now) {
    std::erase_if(denials_, [&](const Denial& denial) { return now - denial.at >= kDenialHolds; });
    for (const auto& denial : denials_) {
        if (denial.subject.what == subject.what && denial.subject.payment == subject.payment &&
            shareMost(denial.subject.texts, subject.texts)) {
            return denial.refusal;
        }
    }
    return std::nullopt;
}

bool QuestionHistory::mustWait(TimePoint now) {
    return most_ > 0 && lately(now) >= most_ && now - asked_.back() < kPause;
}

std::size_t QuestionHistory::lately(TimePoint now) {
    std::erase_if(asked_, [&](TimePoint at) { return now - at >= kWindow; });
    return asked_.size();
}

}  // namespace tandrel
