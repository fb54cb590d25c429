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

}  // namespace tandrel
