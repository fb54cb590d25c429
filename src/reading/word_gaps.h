#pragma once

#include <span>
#include <string>
#include <vector>

#include "reading/letter_search.h"

namespace tandrel {

// For each letter found on a strip how wide a gap comes before it, in heights of the ink; 0 where
// there is none, or where the network found a space in it. `letters` are the model's, by class.
std::vector<double> unseenGaps(const Strip& strip, std::span<const FoundLetter> found,
                               std::span<const std::string> letters);

}  // namespace tandrel
