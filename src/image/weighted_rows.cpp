#include "image/weighted_rows.h"

#include <algorithm>
#include <cstddef>

namespace tandrel {
namespace {

constexpr std::uint32_t kHalfByte = 1 << 23;  // half of the last place after two 8-bit fractions

}  // namespace

// In units of 1/to of a source line, output line i covers [i * from, (i + 1) * from) and source
// line k covers [k * to, (k + 1) * to). Rounding the running total rather than each weight makes
// the weights add up exactly.
AreaWeights::AreaWeights(int from, int to) {
    first_.reserve(static_cast<std::size_t>(to));
    offset_.reserve(static_cast<std::size_t>(to) + 1);
    offset_.push_back(0);
    for (std::int64_t i = 0; i < to; ++i) {
        const std::int64_t start = i * from;
        const std::int64_t end = start + from;
        std::int64_t k = start / to;
        first_.push_back(static_cast<int>(k));
        for (std::uint32_t total = 0; total < kWholeWeight; ++k) {
            const std::int64_t covered = std::min(end, (k + 1) * to) - start;
            const auto reached =
                static_cast<std::uint32_t>((covered * kWholeWeight + from / 2) / from);
            weights_.push_back(reached - total);
            total = reached;
        }
        offset_.push_back(static_cast<int>(weights_.size()));
    }
}

void addWeighted(std::uint32_t* __restrict sums, const std::uint8_t* __restrict bytes,
                 std::uint32_t weight, int count) {
    for (int i = 0; i < count; ++i) sums[i] += bytes[i] * weight;
}

void toFixedPoint(std::uint16_t* __restrict fixed, const std::uint32_t* __restrict sums,
                  int count) {
    for (int i = 0; i < count; ++i) fixed[i] = static_cast<std::uint16_t>((sums[i] + 128) >> 8);
}

void averageColumns(std::uint8_t* out, const std::uint16_t* row, const AreaWeights& columns,
                    int width) {
    for (int x = 0; x < width; ++x) {
        const std::uint32_t* weights = columns.weights(x);
        const std::uint16_t* p = row + 4 * static_cast<std::ptrdiff_t>(columns.first(x));
        std::uint32_t sum[4] = {kHalfByte, kHalfByte, kHalfByte, kHalfByte};
        for (int k = columns.count(x); k > 0; --k, p += 4, ++weights) {
            for (int c = 0; c < 4; ++c) sum[c] += p[c] * *weights;
        }
        for (int c = 0; c < 4; ++c) *out++ = static_cast<std::uint8_t>(sum[c] >> 24);
    }
}

void averageGreyColumns(std::uint8_t* out, const std::uint16_t* row, const AreaWeights& columns,
                        int width) {
    for (int x = 0; x < width; ++x) {
        const std::uint32_t* weights = columns.weights(x);
        const std::uint16_t* p = row + columns.first(x);
        std::uint32_t sum = kHalfByte;
        for (int k = columns.count(x); k > 0; --k) sum += *p++ * *weights++;
        out[x] = static_cast<std::uint8_t>(sum >> 24);
    }
}

void toGrey(std::uint16_t* __restrict grey, const std::uint16_t* __restrict row, int width) {
    for (int x = 0; x < width; ++x) {
        const std::uint16_t* p = row + 4 * static_cast<std::ptrdiff_t>(x);
        grey[x] = static_cast<std::uint16_t>((29u * p[0] + 150u * p[1] + 77u * p[2] + 128) >> 8);
    }
}

}  // namespace tandrel
