#pragma once

#include <string>

#include "base/json.h"

namespace tandrel {

// The same text as dumpJson's, several times as quick where there are long texts of plain ASCII: a
// picture of half a million characters is most of what is ever sent.
std::string messageText(const Json& value);

}  // namespace tandrel
