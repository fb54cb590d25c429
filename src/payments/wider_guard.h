#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "payments/guard_words.h"
#include "payments/payment_guard.h"

// The second layer of the payment guard: asks where `assess` gives no verdict, with wider
// knowledge.
namespace tandrel::PaymentGuard {

struct WiderVerdict {
    std::string why;        // in the forms of `assess`
    std::string_view rule;  // the name of the rule that saw it
};

// Immutable; any thread.
class WiderGuard {
 public:
    explicit WiderGuard(std::shared_ptr<const GuardWords> words = GuardWords::builtIn());

    // Why the owner must be asked; none when no rule sees a payment. `without` leaves one rule out.
    std::optional<WiderVerdict> assess(const std::vector<Line>& lines, FrameSize frame,
                                       const Action& action, std::string_view without = {}) const;
    // What `PaymentGuard::details` says; where that knows none of the amounts, with those that the
    // word files know.
    Details details(const std::vector<std::string>& texts) const;
    // Whether something is paid on a screen of these texts.
    bool paymentScreen(const std::vector<std::string>& texts) const;

 private:
    std::shared_ptr<const GuardWords> words_;
};

}  // namespace tandrel::PaymentGuard
