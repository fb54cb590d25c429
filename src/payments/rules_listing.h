#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "payments/wider_rules.h"

namespace tandrel::PaymentGuard {

enum class RulesFormat { table, json };

// Prints the second layer's rules in the order in which they are tried: name, what each sees, why,
// and the examples that it must catch and must leave alone. As JSON: {"rules":[{"name", "sees",
// "why", "asks", "leaves"}]}. 0.
int printRules(RulesFormat format, std::FILE* out = stdout);

// What is wrong with a rule's examples. The one that it must catch is let through by the first
// layer and seen by this rule; the other is left alone by every rule. Empty when both hold.
std::vector<std::string> exampleFaults(const WiderRule& rule);

}  // namespace tandrel::PaymentGuard
