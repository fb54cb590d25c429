#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/result.h"

namespace tandrel {

// The place of a server on this computer, such as "http://127.0.0.1:7390".
struct LoopbackUrl {
    enum class Family { ipv4, ipv6 };
    Family family = Family::ipv4;
    std::uint16_t port = 80;
    std::string host;    // as it goes into the Host header, with brackets around IPv6
    std::string prefix;  // what stands before every path, without a slash at its end

    // Reads an "http" URL of localhost, 127.0.0.1 or [::1]. The error says what is wrong with it.
    static Result<LoopbackUrl> parse(std::string_view text);
    static LoopbackUrl ofPort(std::uint16_t port);

    std::string text() const;
};

}  // namespace tandrel
