#pragma once

#include <string_view>

#include "payments/guard_patterns.h"

namespace tandrel::PaymentGuard {

// Whether the text holds what no match of the rule can be without. Takes a tenth of the time of a
// search, and most lines of a screen hold nothing of the kind.
bool mayMatch(Rule rule, std::string_view text);

// The part of the text, in whole words, that holds every match of Rule::money; empty when there can
// be none. An amount is looked for from every digit up to the next currency, which takes the square
// of the length on a row of numbers.
std::string_view partWithAmounts(std::string_view text);

}  // namespace tandrel::PaymentGuard
