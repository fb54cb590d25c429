#pragma once

#include "payments/asker.h"

namespace tandrel {

// Asks the owner on the terminal that the application was started in, and only because it was
// started with `--ask-here`. The answer is a typed word, "approve" and Return; anything else is a
// no.
class TerminalAsker final : public Asker {
 public:
    explicit TerminalAsker(Clock& clock) : clock_(clock) {}
    ApprovalAnswer ask(const ApprovalRequest& request, TimePoint deadline,
                       std::stop_token withdrawn) override;
    void tell(const std::string& text) override;

 private:
    Clock& clock_;
};

}  // namespace tandrel
