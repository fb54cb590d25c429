#include "reading/packed_matrix.h"

#include <algorithm>

namespace tandrel {

PackedMatrix::PackedMatrix(int outputs, int inputs, std::span<const std::int8_t> weights,
                           std::span<const double> scales)
    : outputs_(outputs), inputs_(inputs) {
    constexpr double kUnit = 127;  // the 8-bit input that stands for 1.0
    const auto padded = static_cast<std::size_t>(paddedOutputs());
    weights_.assign(padded * static_cast<std::size_t>(quads() * kQuad), 0);
    scales_.assign(padded, 0);
    biases_.assign(padded, 0);
    offsets_.assign(padded, 0);
    for (int o = 0; o < outputs; ++o) {
        const auto row = weights.subspan(static_cast<std::size_t>(o) * (inputs + 1),
                                         static_cast<std::size_t>(inputs) + 1);
        for (int k = 0; k < inputs; ++k) {
            // -128, which no training leaves behind, has no counterpart with the other sign.
            const auto weight = std::max<std::int8_t>(row[k], -127);
            weights_[place(o, k)] = weight;
            offsets_[o] += 128 * weight;
        }
        scales_[o] = static_cast<float>(scales[o] / kUnit);
        biases_[o] = static_cast<float>(row[inputs] * scales[o]);
    }
}

PackedMatrix PackedMatrix::withEveryFourthIgnored() const {
    PackedMatrix spread = *this;
    spread.inputs_ = inputs_ / 3 * kQuad;
    spread.weights_.assign(static_cast<std::size_t>(paddedOutputs()) * spread.inputs_, 0);
    for (int o = 0; o < outputs_; ++o) {
        for (int k = 0; k < inputs_; ++k) {
            spread.weights_[spread.place(o, k / 3 * kQuad + k % 3)] = weight(o, k);
        }
    }
    return spread;
}

}  // namespace tandrel
