#include "app/panel_asker.h"

#include <atomic>
#include <memory>

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

ApprovalAnswer PanelAsker::ask(const ApprovalRequest& request, TimePoint deadline,
                               std::stop_token withdrawn) {
    const auto box = std::make_shared<AnswerBox>(clock_);
    // The panel lives on the main thread only; this thread hands the holder on and never looks in.
    const auto holder = std::make_shared<std::unique_ptr<ApprovalPrompt>>();
    const std::string notification = nextNotificationId();
    loop_.post([=, this] {
        *holder = std::make_unique<ApprovalPrompt>(
            request, deadline, clock_, [box](ApprovalAnswer answer) { box->put(answer); });
        (*holder)->open();
        notifications_.playAttentionSound();
        notifications_.post(notification, "Tandrel: approve a payment",
                            fmt::format("Your AI wants to {} on your iPhone. Answer in the Tandrel "
                                        "window.",
                                        request.what));
    });
    const ApprovalAnswer answer = box->wait(deadline, withdrawn);
    loop_.post([=, this] {
        holder->reset();
        notifications_.withdraw(notification);
    });
    return answer;
}

}  // namespace tandrel
