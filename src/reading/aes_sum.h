#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

namespace tandrel {

// Whether the processor has instructions for a round of AES.
bool hasAesRounds();

// 128 bits over bytes, mixed with secrets drawn at program start. Only where hasAesRounds().
std::pair<std::uint64_t, std::uint64_t> aesSumOf(const std::uint8_t* bytes, std::size_t count);

}  // namespace tandrel
