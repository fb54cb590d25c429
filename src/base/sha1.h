#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace tandrel {

// The digest of FIPS 180-4, for names (RFC 9562 UUIDs of version 5) and nothing secret.
std::array<std::uint8_t, 20> sha1(std::span<const std::uint8_t> data);

}  // namespace tandrel
