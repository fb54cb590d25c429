#pragma once

#include <optional>
#include <string>

namespace tandrel {

// The value of an environment variable; absent when it is not set. Reads the process's environment,
// which nothing in this program changes after start.
std::optional<std::string> environment(const char* name);

}  // namespace tandrel
