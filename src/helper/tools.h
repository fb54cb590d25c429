#pragma once

#include <span>
#include <string_view>

#include "helper/tool.h"

namespace tandrel {

// Every tool, in the order in which apps list them.
std::span<const Tool> tools();
// None when there is no such tool.
const Tool* findTool(std::string_view name);

}  // namespace tandrel
