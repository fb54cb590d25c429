#pragma once

#include <array>
#include <cstdint>
#include <random>

namespace tandrel {

// Numbers that nobody outside this run of the program knows.
template <std::size_t kCount>
std::array<std::uint64_t, kCount> drawSecrets() {
    std::random_device device;
    std::array<std::uint64_t, kCount> drawn{};
    for (auto& value : drawn) value = (std::uint64_t{device()} << 32) | device();
    return drawn;
}

}  // namespace tandrel
