#pragma once

#include <string>
#include <string_view>

namespace tandrel {

// Whether the text holds a digit or a currency sign.
bool holdsFigures(std::string_view text);

// Whether the text holds digits with a currency sign, or with a point and two digits behind it.
bool holdsAmount(std::string_view text);

// Whether the text has a letter where an amount has a sign or a digit: S for a dollar sign, O for a
// nought, B for an 8.
bool mayMisspellAmount(std::string_view text);

// Without what icons beside a text are read as: chevrons, marks and bullets at its ends. Empty if
// no letter and no digit is left.
std::string withoutMarks(std::string_view text);

}  // namespace tandrel
