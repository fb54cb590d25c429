#include "image/png_filter.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

// Compiled for vectorising. Differences are taken on whole four-byte pixels, which lie alike in
// both operands, and only the chosen ones are packed to three bytes.
namespace tandrel {
namespace {

constexpr std::uint8_t kSub = 1;
constexpr std::uint8_t kUp = 2;

static_assert(std::endian::native == std::endian::little, "pixels are read as little-endian words");

std::uint32_t load(const std::uint8_t* p) {
    std::uint32_t value;
    std::memcpy(&value, p, sizeof value);
    return value;
}

// The bytes of `a` minus those of `b`, each on its own: the top bit of each byte is kept out of the
// subtraction, so that no borrow crosses into the next.
std::uint32_t minusBytes(std::uint32_t a, std::uint32_t b) {
    constexpr std::uint32_t kTop = 0x80808080;
    return ((a | kTop) - (b & ~kTop)) ^ ((a ^ ~b) & kTop);
}

// Blue, green, red to three bytes red, green, blue; the fourth byte written is overwritten by the
// next pixel.
void store(std::uint8_t* out, std::uint32_t pixel) {
    const std::uint32_t rgb = __builtin_bswap32(pixel) >> 8;
    std::memcpy(out, &rgb, sizeof rgb);
}

// The sum of the differences' magnitudes, a difference being a signed byte. The ignored byte counts
// as well where sources vary it; none do.
std::uint32_t magnitude(const std::uint8_t* __restrict a, const std::uint8_t* __restrict b,
                        int bytes) {
    std::uint32_t sum = 0;
    for (int i = 0; i < bytes; ++i) {
        const auto difference = static_cast<std::uint8_t>(a[i] - b[i]);
        sum += std::min(difference, static_cast<std::uint8_t>(-difference));
    }
    return sum;
}

void writeSub(std::uint8_t* out, const std::uint8_t* row, int width) {
    std::uint32_t left = 0;
    for (int x = 0; x < width; ++x, out += 3) {
        const std::uint32_t pixel = load(row + 4 * static_cast<std::ptrdiff_t>(x));
        store(out, minusBytes(pixel, left));
        left = pixel;
    }
}

void writeUp(std::uint8_t* out, const std::uint8_t* row, const std::uint8_t* above, int width) {
    for (int x = 0; x < width; ++x, out += 3) {
        const std::ptrdiff_t at = 4 * static_cast<std::ptrdiff_t>(x);
        store(out, minusBytes(load(row + at), load(above + at)));
    }
}

}  // namespace

void filterRow(std::uint8_t* out, const std::uint8_t* row, const std::uint8_t* above, int width) {
    const int bytes = 4 * width;
    if (above == nullptr) {
        *out = kSub;
        writeSub(out + 1, row, width);
    } else if (std::memcmp(row, above, static_cast<std::size_t>(bytes)) == 0) {
        *out = kUp;
        std::memset(out + 1, 0, 3 * static_cast<std::size_t>(width));
    } else if (magnitude(row + 4, row, bytes - 4) < magnitude(row, above, bytes)) {
        *out = kSub;
        writeSub(out + 1, row, width);
    } else {
        *out = kUp;
        writeUp(out + 1, row, above, width);
    }
}

}  // namespace tandrel
