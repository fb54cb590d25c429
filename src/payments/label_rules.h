#pragma once

#include "payments/rule_verdicts.h"

// What the second layer sees in the label under the point alone, whatever screen it is on.
// Each of them is a row of the table of rules, which says what it sees and why.
namespace tandrel::PaymentGuard {

Verdict payWords(const WideScreen& screen);
Verdict amountButton(const WideScreen& screen);
Verdict bareAmount(const WideScreen& screen);
Verdict unitButton(const WideScreen& screen);
Verdict everyLine(const WideScreen& screen);
Verdict splitLabel(const WideScreen& screen);
Verdict lookAlikes(const WideScreen& screen);
Verdict mirrored(const WideScreen& screen);

}  // namespace tandrel::PaymentGuard
