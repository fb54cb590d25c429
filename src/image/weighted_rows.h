#pragma once

#include <cstdint>
#include <vector>

// The inner loops of the area scaler, in a file of their own that is compiled for vectorising.
namespace tandrel {

// Weights are 16-bit fractions: those of one output pixel add up to kWholeWeight.
inline constexpr std::uint32_t kWholeWeight = 1 << 16;

// How `from` source lines map to `to` output lines: each output line is the average of the part of
// the source that it covers, so its first and last source line usually count in part.
class AreaWeights {
 public:
    AreaWeights(int from, int to);

    int first(int output) const { return first_[static_cast<std::size_t>(output)]; }
    int count(int output) const {
        const auto i = static_cast<std::size_t>(output);
        return offset_[i + 1] - offset_[i];
    }
    const std::uint32_t* weights(int output) const {
        return weights_.data() + offset_[static_cast<std::size_t>(output)];
    }

 private:
    std::vector<int> first_;   // by output line: its first source line
    std::vector<int> offset_;  // by output line: where its weights begin
    std::vector<std::uint32_t> weights_;
};

// sums[i] += bytes[i] * weight
void addWeighted(std::uint32_t* sums, const std::uint8_t* bytes, std::uint32_t weight, int count);

// Sums of whole weight to bytes with eight more binary places, rounded.
void toFixedPoint(std::uint16_t* fixed, const std::uint32_t* sums, int count);

// Four interleaved channels across a row: `out` gets one four-byte pixel for each output column.
void averageColumns(std::uint8_t* out, const std::uint16_t* row, const AreaWeights& columns,
                    int width);

// The same for one channel.
void averageGreyColumns(std::uint8_t* out, const std::uint16_t* row, const AreaWeights& columns,
                        int width);

// Brightness (ITU-R BT.601 weights in 1/256) of blue, green, red, ignored; eight binary places.
void toGrey(std::uint16_t* grey, const std::uint16_t* row, int width);

}  // namespace tandrel
