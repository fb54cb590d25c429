#pragma once

#include "payments/rule_verdicts.h"

// What the second layer sees in where a button stands, whatever it says.
// Each of them is a row of the table of rules, which says what it sees and why.
namespace tandrel::PaymentGuard {

// How far from the middle is still in the middle, of the frame's width.
inline constexpr double kCentred = 0.06;
// The most words of a button in more words than a button has.
inline constexpr std::size_t kMostLongWords = 14;

// Centred, with nothing but a refusal beside it.
bool standsAlone(const Label& label, const WideScreen& screen);
// So, below an amount.
bool standsLikePayButton(const Label& label, const WideScreen& screen);

Verdict standingAmount(const WideScreen& screen);
Verdict standingUnits(const WideScreen& screen);
Verdict standingLongLabel(const WideScreen& screen);
Verdict buttonUnderSum(const WideScreen& screen);
Verdict buttonOfPayment(const WideScreen& screen);
Verdict underPrices(const WideScreen& screen);
Verdict amountBar(const WideScreen& screen);
Verdict upsell(const WideScreen& screen);

}  // namespace tandrel::PaymentGuard
