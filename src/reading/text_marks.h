#pragma once

#include <string>
#include <string_view>

namespace tandrel {

// Whether the text holds a digit or a currency sign.
bool holdsFigures(std::string_view text);

// Whether the text has an S before an amount, which may be a dollar sign.
bool mayMisspellSign(std::string_view text);

// Without what icons beside a text are read as: chevrons, marks and bullets at its ends. Empty if
// no letter and no digit is left.
std::string withoutMarks(std::string_view text);

}  // namespace tandrel
