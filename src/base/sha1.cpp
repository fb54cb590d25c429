#include "base/sha1.h"

#include <bit>
#include <vector>

namespace tandrel {
namespace {

constexpr std::size_t kBlock = 64;

using State = std::array<std::uint32_t, 5>;

// The message, a 1 bit, zeros, and its length in bits as the last eight bytes of a block.
std::vector<std::uint8_t> padded(std::span<const std::uint8_t> data) {
    std::vector<std::uint8_t> message(data.begin(), data.end());
    message.push_back(0x80);
    while (message.size() % kBlock != kBlock - 8) message.push_back(0);
    const std::uint64_t bits = std::uint64_t{data.size()} * 8;
    for (int shift = 56; shift >= 0; shift -= 8) {
        message.push_back(static_cast<std::uint8_t>(bits >> shift));
    }
    return message;
}

struct Round {
    std::uint32_t function;
    std::uint32_t constant;
};

Round roundOf(std::size_t t, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    if (t < 20) return {(b & c) | (~b & d), 0x5A827999};
    if (t < 40) return {b ^ c ^ d, 0x6ED9EBA1};
    if (t < 60) return {(b & c) | (b & d) | (c & d), 0x8F1BBCDC};
    return {b ^ c ^ d, 0xCA62C1D6};
}

void add(State& state, std::span<const std::uint8_t> block) {
    std::array<std::uint32_t, 80> w{};
    for (std::size_t t = 0; t < 16; ++t) {
        for (std::size_t i = 0; i < 4; ++i) w[t] = w[t] << 8 | block[4 * t + i];
    }
    for (std::size_t t = 16; t < w.size(); ++t) {
        w[t] = std::rotl(w[t - 3] ^ w[t - 8] ^ w[t - 14] ^ w[t - 16], 1);
    }
    auto [a, b, c, d, e] = state;
    for (std::size_t t = 0; t < w.size(); ++t) {
        const Round round = roundOf(t, b, c, d);
        const std::uint32_t next = std::rotl(a, 5) + round.function + e + round.constant + w[t];
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = next;
    }
    state = {state[0] + a, state[1] + b, state[2] + c, state[3] + d, state[4] + e};
}

}  // namespace

std::array<std::uint8_t, 20> sha1(std::span<const std::uint8_t> data) {
    State state = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    const auto message = padded(data);
    for (std::size_t at = 0; at < message.size(); at += kBlock) {
        add(state, std::span(message).subspan(at, kBlock));
    }
    std::array<std::uint8_t, 20> digest{};
    for (std::size_t i = 0; i < digest.size(); ++i) {
        digest[i] = static_cast<std::uint8_t>(state[i / 4] >> (24 - 8 * (i % 4)));
    }
    return digest;
}

}  // namespace tandrel
