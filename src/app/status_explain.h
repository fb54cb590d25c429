#pragma once

#include <string>
#include <string_view>

namespace tandrel {

struct Explain {
    // An error of the engine's API in the owner's words. `status` is the reply's, 0 without a
    // reply.
    static std::string actionError(std::string_view message, int status);
};

}  // namespace tandrel
