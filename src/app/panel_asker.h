#pragma once

#include <map>
#include <memory>
#include <string>

#include "payments/asker.h"
#include "platform/main_loop.h"
#include "platform/notifications.h"

namespace tandrel {

class ApprovalPrompt;

// Asks the owner in a panel on this computer's screen, with a sound, and a desktop notification
// that only points to the panel.
class PanelAsker final : public Asker {
 public:
    PanelAsker(MainLoop& loop, Notifications& notifications, Clock& clock);

    // Main thread, once nobody asks any more; closes panels that are still open.
    ~PanelAsker() override;

    // Any thread but the main one; blocks until the answer, the deadline or the withdrawal.
    ApprovalAnswer ask(const ApprovalRequest& request, TimePoint deadline,
                       std::stop_token withdrawn) override;
    void tell(const std::string& text) override;

 private:
    MainLoop& loop_;
    Notifications& notifications_;
    Clock& clock_;
    // By the identifier of their notification; main thread only.
    std::map<std::string, std::unique_ptr<ApprovalPrompt>> prompts_;
};

}  // namespace tandrel
