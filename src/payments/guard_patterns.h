#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/regex.h"

// The texts by which the payment guard knows a payment. Names are those of the rules they serve.
namespace tandrel::PaymentGuard {

enum class Rule {
    payment,
    commit,
    money,
    moneyWords,
    slide,
    sheet,
    iosMoneyWords,
    commitButton,
    strong,
    passcode,
    passcodeContext,
    priceOnly,
    payeeLabel,
    payeeInline,
    payeeTo,
    payeePay,
    moneyLine,
    payeeCut,
    iban,
    card,
    notPayee,
    webAddress,
    spaces,
    numeric,
    word,
};

// The pattern as the regular-expression engine gets it.
std::string_view pattern(Rule rule);
// Compiled at first use, all at once, and shared by every thread from then on.
const Regex& regex(Rule rule);

// Whether the rule finds a match anywhere in the whole text.
bool has(Rule rule, std::string_view text);
// The text of its first match.
std::optional<std::string> first(Rule rule, std::string_view text);
// The text of one capture group of every match, in order; a match without that group is skipped.
std::vector<std::string> all(Rule rule, std::string_view text, int group = 0);
// The text with every match replaced by `replacement`, taken literally.
std::string replaceAll(Rule rule, std::string_view text, std::string_view replacement);

}  // namespace tandrel::PaymentGuard
