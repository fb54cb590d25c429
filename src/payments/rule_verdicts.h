#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "payments/wide_screen.h"

// How the second layer's rules word what they see, and what several of them ask of a label.
namespace tandrel::PaymentGuard {

using Verdict = std::optional<std::string>;

Verdict payButton(std::string_view label);
Verdict onPayment(std::string_view label, const WideScreen& screen);
Verdict unlabelled(const WideScreen& screen);

inline constexpr std::size_t kMostCommitWords = 5;

// The first layer would take it for a pay button.
bool isStrong(const Label& label);
// It would pay on whatever screen it is.
bool isPayButton(const Label& label);
// One of at least three lines of a list, from the left edge.
bool isListed(const Label& label, const WideScreen& screen);
// So, and the only one of them with an amount: "Renew bus pass $65" among errands.
bool isPricedAlone(const Label& label, const WideScreen& screen);
// "Pay the plumber $120 on Friday": a line of a list, from the left edge, that goes on behind its
// amount.
bool isEntry(const Label& label, const WideScreen& screen);
// A word that commits a form, and nothing else.
bool commits(const Label& label);

}  // namespace tandrel::PaymentGuard
