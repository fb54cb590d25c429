#pragma once

#include "payments/rule_verdicts.h"

// What the second layer sees in an action together with the screen around it.
// Each of them is a row of the table of rules, which says what it sees and why.
namespace tandrel::PaymentGuard {

Verdict verbAndObject(const WideScreen& screen);
Verdict buyingVerb(const WideScreen& screen);
Verdict verbBesideAmount(const WideScreen& screen);
Verdict longLabel(const WideScreen& screen);
Verdict offer(const WideScreen& screen);
Verdict commitWithCaption(const WideScreen& screen);
Verdict dialog(const WideScreen& screen);
Verdict paymentScreenTap(const WideScreen& screen);
Verdict payBand(const WideScreen& screen);
Verdict iconBesideAmount(const WideScreen& screen);
Verdict iconAlone(const WideScreen& screen);
Verdict tipShare(const WideScreen& screen);
Verdict slider(const WideScreen& screen);
Verdict enterKey(const WideScreen& screen);
Verdict secret(const WideScreen& screen);
Verdict turned(const WideScreen& screen);

}  // namespace tandrel::PaymentGuard
