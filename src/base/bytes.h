#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tandrel {

using Bytes = std::vector<std::uint8_t>;

inline Bytes toBytes(std::string_view text) { return {text.begin(), text.end()}; }
inline std::string toText(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

}  // namespace tandrel
