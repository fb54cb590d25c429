#pragma once

#include <string>
#include <string_view>
#include <vector>

// What a screen says about a payment: how much, and to whom.
namespace tandrel::PaymentGuard {

struct Details {
    std::vector<std::string> amounts;  // with their currency, as shown
    std::vector<std::string> payees;   // recipients, account numbers, card endings

    bool operator==(const Details&) const = default;

    // What the owner is told is on the screen.
    std::string summary() const;
    // The question to the owner.
    std::string title() const;
    // Two screens show the same payment when their keys are equal: all amounts and all recipients,
    // whatever their order, spacing and letter case.
    std::string key() const;
};

// Reads the lines of a screen in order. Every entry is normalised and kept once.
Details details(const std::vector<std::string>& texts);

// A recognised amount or name with mis-decoded currency symbols repaired, each run of white space
// made one space, trimmed, and without punctuation at its end.
std::string norm(std::string_view text);

}  // namespace tandrel::PaymentGuard
