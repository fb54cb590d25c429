#include "base/environment.h"

#include <cstdlib>

namespace tandrel {

std::optional<std::string> environment(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr) return std::nullopt;
    return value;
}

}  // namespace tandrel
