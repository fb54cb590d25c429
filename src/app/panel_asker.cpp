#include "app/panel_asker.h"

#include <atomic>

#include <fmt/format.h>

#include "app/answer_box.h"
#include "app/approval_prompt.h"

namespace tandrel {
namespace {

std::string nextNotificationId() {
    static std::atomic<unsigned> count{0};
    return fmt::format("approval-{}", ++count);
}

}  // namespace

PanelAsker::PanelAsker(MainLoop& loop, Notifications& notifications, Clock& clock)
    : loop_(loop), notifications_(notifications), clock_(clock) {}

PanelAsker::~PanelAsker() = default;

ApprovalAnswer PanelAsker::ask(const ApprovalRequest& request, TimePoint deadline,
                               std::stop_token withdrawn) {
    const auto box = std::make_shared<AnswerBox>(clock_);
    const std::string id = nextNotificationId();
    loop_.post([=, this] {
        auto& prompt = prompts_[id];
        prompt = std::make_unique<ApprovalPrompt>(
            request, deadline, clock_, [box](ApprovalAnswer answer) { box->put(answer); });
        prompt->open();
        notifications_.playAttentionSound();
        notifications_.post(id, "Tandrel: approve a payment",
                            fmt::format("Your AI wants to {} on your iPhone. Answer in the Tandrel "
                                        "window.",
                                        request.what));
    });
    const ApprovalAnswer answer = box->wait(deadline, withdrawn);
    loop_.post([=, this] {
        prompts_.erase(id);
        notifications_.withdraw(id);
    });
    return answer;
}

void PanelAsker::tell(const std::string& text) {
    loop_.post([=, this] { notifications_.post("approvals-wait", "Tandrel", text); });
}

}  // namespace tandrel
