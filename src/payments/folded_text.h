#pragma once

#include <string>
#include <string_view>

// Texts made comparable, so that a word is known however it is written or was read.
namespace tandrel::PaymentGuard {

// Compatibility forms made plain (Unicode NFKC): full-width digits and letters, ligatures, the
// special spaces. Letter case stays.
std::string plain(std::string_view text);

// Words of letters and digits with one space before and after each: letter case, accents and
// look-alikes (UTS #39 skeleton: Cyrillic "а", "0" for "o", "rn" for "m") made equal. Two texts
// with the same folded form look alike. Empty when the text has no word.
std::string folded(std::string_view text);

// The text with every word that only looks Latin (letters of other scripts, digits amid letters)
// spelled in Latin letters; the same text when there is none.
std::string unmasked(std::string_view text);

// The text's characters in reverse order, as a mirrored picture shows them.
std::string reversed(std::string_view text);

}  // namespace tandrel::PaymentGuard
