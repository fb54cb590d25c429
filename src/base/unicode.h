#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tandrel {

bool isAscii(std::string_view text);
bool isUtf8(std::string_view text);

// The text's user-perceived characters (extended grapheme clusters, UAX #29), in order. Bytes that
// are not UTF-8 come as U+FFFD.
std::vector<std::string> graphemes(std::string_view text);
std::size_t graphemeCount(std::string_view text);
// The text's first `count` user-perceived characters.
std::string firstGraphemes(std::string_view text, std::size_t count);

// Normalisation form C, in which canonically equivalent texts are equal bytes.
std::string composed(std::string_view text);

std::string lowerCased(std::string_view text);

// Without white space (Unicode White_Space) and newlines at both ends.
std::string trimmed(std::string_view text);

}  // namespace tandrel
