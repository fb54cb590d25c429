#pragma once

#include <span>
#include <string>
#include <string_view>

#include "reading/letter_search.h"
#include "reading/strip_reader.h"

namespace tandrel {

// The text of the letters found on a strip, with spaces where the strip shows wide gaps, and how
// sure the network was of a letter on average.
StripText composeText(const Strip& strip, const FoundLetters& found,
                      std::span<const std::string> letters);

// Whether the ink contradicts a text with figures: points and commas, which a network loses easily,
// stand on the strip as small marks of their own at the foot of the line and can be counted.
bool contradictsInk(const Strip& strip, std::string_view text);

// Whether the text holds a digit or a currency sign.
bool holdsFigures(std::string_view text);

// Whether the text has an S before an amount, which may be a dollar sign.
bool mayMisspellSign(std::string_view text);

// Without what icons beside a text are read as: chevrons, marks and bullets at its ends. Empty if
// no letter and no digit is left.
std::string withoutMarks(std::string_view text);

}  // namespace tandrel
