#pragma once

#include "payments/asker.h"
#include "platform/main_loop.h"
#include "platform/notifications.h"

namespace tandrel {

// Asks the owner in a panel on this computer's screen, with a sound, and a desktop notification
// that only points to the panel.
class PanelAsker final : public Asker {
 public:
    PanelAsker(MainLoop& loop, Notifications& notifications, Clock& clock);

    // Any thread but the main one; blocks until the answer, the deadline or the withdrawal.
    ApprovalAnswer ask(const ApprovalRequest& request, TimePoint deadline,
                       std::stop_token withdrawn) override;

 private:
    MainLoop& loop_;
    Notifications& notifications_;
    Clock& clock_;
};

}  // namespace tandrel
