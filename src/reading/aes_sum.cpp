#include "reading/aes_sum.h"

#if defined(__x86_64__)

#include <array>
#include <cstring>

#include <immintrin.h>

#include "reading/secrets.h"

namespace tandrel {
namespace {

// Of which each keeps one unit of the processor busy while the others wait for their results.
constexpr std::size_t kAesLanes = 8;
constexpr std::size_t kAesLaneBytes = 16;
constexpr std::size_t kAesBlockBytes = kAesLanes * kAesLaneBytes;

#define TANDREL_AES __attribute__((target("aes,sse4.1")))

using Secrets = std::array<std::uint64_t, 2 * kAesLanes>;
const Secrets& aesSecrets() {
    static const Secrets drawn = drawSecrets<2 * kAesLanes>();
    return drawn;
}

TANDREL_AES inline __m128i load(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

// Three rounds spread a difference over nine S-boxes at least (the branch number of MixColumns), so
// that without the aesSecrets none can be met by another one but by chance of 2^-54.
TANDREL_AES inline __m128i mixed(__m128i state, __m128i word, __m128i key) {
    state = _mm_aesenc_si128(_mm_xor_si128(state, word), key);
    state = _mm_aesenc_si128(state, key);
    return _mm_aesenc_si128(state, key);
}

TANDREL_AES inline void addBlock(__m128i* lanes, const std::uint8_t* block, const __m128i* keys) {
    for (std::size_t i = 0; i < kAesLanes; ++i)
        lanes[i] = mixed(lanes[i], load(block + i * kAesLaneBytes), keys[i]);
}

}  // namespace

bool hasAesRounds() {
    static const bool has = __builtin_cpu_supports("aes") && __builtin_cpu_supports("sse4.1");
    return has;
}

TANDREL_AES std::pair<std::uint64_t, std::uint64_t> aesSumOf(const std::uint8_t* bytes,
                                                             std::size_t count) {
    __m128i keys[kAesLanes], lanes[kAesLanes];
    for (std::size_t i = 0; i < kAesLanes; ++i) keys[i] = load(&aesSecrets()[2 * i]);
    // Each lane begins with another one's key.
    for (std::size_t i = 0; i < kAesLanes; ++i) lanes[i] = keys[(i + 3) % kAesLanes];
    const __m128i length = _mm_set1_epi64x(static_cast<long long>(count));
    for (; count >= kAesBlockBytes; bytes += kAesBlockBytes, count -= kAesBlockBytes)
        addBlock(lanes, bytes, keys);
    if (count > 0) {
        std::array<std::uint8_t, kAesBlockBytes> rest{};
        std::memcpy(rest.data(), bytes, count);
        addBlock(lanes, rest.data(), keys);
    }
    __m128i sum = length;
    for (const __m128i& lane : lanes) sum = _mm_xor_si128(sum, lane);
    sum = mixed(sum, keys[1], keys[2]);
    std::array<std::uint64_t, 2> halves{};
    _mm_storeu_si128(reinterpret_cast<__m128i*>(halves.data()), sum);
    return {halves[0], halves[1]};
}

#undef TANDREL_AES

}  // namespace tandrel

#else

namespace tandrel {

bool hasAesRounds() { return false; }
std::pair<std::uint64_t, std::uint64_t> aesSumOf(const std::uint8_t*, std::size_t) { return {}; }

}  // namespace tandrel

#endif
