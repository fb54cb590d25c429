#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tandrel {

// A matrix of 8-bit weights, laid out for the kernels: outputs in groups of 16, inputs in quads.
// Within a group, quad q of output o begins at byte (q * 16 + o) * 4, so 64 bytes hold four weights
// of each of 16 outputs. Padding outputs and inputs have weight 0.
//
//   output o of input x:  scale[o] * sum(weight[o][k] * x[k]) + bias[o],
//   weights and x in -127..127
class PackedMatrix {
 public:
    static constexpr int kGroup = 16;
    static constexpr int kQuad = 4;
    // The rows of inputs that a kernel takes hold at most this many bytes.
    static constexpr int kMostInputs = 512;

    PackedMatrix() = default;
    // `weights` are `outputs` rows of `inputs` + 1, the last one the bias; `scales` one for each
    // row, in units of the real weight for an input of 1.0.
    PackedMatrix(int outputs, int inputs, std::span<const std::int8_t> weights,
                 std::span<const double> scales);

    // The same matrix for inputs of which every fourth one counts for nothing. Needs a number of
    // inputs that is a multiple of three.
    PackedMatrix withEveryFourthIgnored() const;

    int outputs() const { return outputs_; }
    int inputs() const { return inputs_; }
    int groups() const { return (outputs_ + kGroup - 1) / kGroup; }
    int quads() const { return (inputs_ + kQuad - 1) / kQuad; }
    int paddedOutputs() const { return groups() * kGroup; }

    std::int8_t weight(int output, int input) const { return weights_[place(output, input)]; }
    const std::int8_t* group(int index) const {
        return weights_.data() + static_cast<std::size_t>(index) * quads() * kGroup * kQuad;
    }
    const float* scales() const { return scales_.data(); }
    const float* biases() const { return biases_.data(); }
    // 128 times the sum of each output's weights: what inputs moved up by 128 add to its sum.
    const std::int32_t* offsets() const { return offsets_.data(); }

 private:
    std::size_t place(int output, int input) const {
        const int quad = output / kGroup * quads() + input / kQuad;
        return static_cast<std::size_t>(quad * kGroup + output % kGroup) * kQuad + input % kQuad;
    }

    int outputs_ = 0;
    int inputs_ = 0;
    std::vector<std::int8_t> weights_;
    std::vector<float> scales_;
    std::vector<float> biases_;
    std::vector<std::int32_t> offsets_;
};

}  // namespace tandrel
