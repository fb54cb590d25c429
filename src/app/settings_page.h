#pragma once

#include <string>
#include <vector>

namespace tandrel {

// Whether the texts of a screen are those of the phone's Settings or of one of its pages, and not
// of a search that lists Settings among its results.
bool looksLikeSettings(const std::vector<std::string>& texts);

}  // namespace tandrel
