#include "payments/asker.h"

namespace tandrel {

ApprovalAnswer NobodyAsker::ask(const ApprovalRequest&, TimePoint deadline,
                                std::stop_token withdrawn) {
    clock_.sleepUntil(deadline, std::move(withdrawn));
    return ApprovalAnswer::timeout;
}

}  // namespace tandrel
