#pragma once

#include <string>
#include <vector>

namespace tandrel {

// The helper that AI apps start; `arguments` without the program's name. Returns the exit status.
int runHelper(const std::vector<std::string>& arguments);

}  // namespace tandrel
