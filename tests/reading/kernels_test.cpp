#include "reading/kernels.h"

#include <random>

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(Kernels, multiplyKnownNumbers) {
    // Two outputs of four inputs: 1*1 + 2*2 + 3*3 + 4*4 = 30 and -127 * 10 = -1270, scaled by
    // 1/127 times 127 and 254, plus biases of 5 * 127 and 0.
    const std::vector<std::int8_t> weights = {1, 2, 3, 4, 5, -127, -127, -127, -127, 0};
    const std::vector<double> scales = {127, 254};
    const PackedMatrix matrix(2, 4, weights, scales);
    const std::vector<std::int8_t> rows = {1, 2, 3, 4, 1, 1, 1, 1};
    for (const Kernels* kernels : availableKernels()) {
        std::vector<float> out(2 * 16);
        // Kernels may read up to 16 bytes of a row.
        std::vector<std::int8_t> padded(rows);
        padded.resize(64);
        kernels->multiply(matrix, padded.data(), 4, 2, out.data());
        EXPECT_FLOAT_EQ(out[0], 30 + 635) << kernels->name;
        EXPECT_FLOAT_EQ(out[1], -1270 * 2) << kernels->name;
        EXPECT_FLOAT_EQ(out[16], 10 + 635) << kernels->name;
    }
}

TEST(Kernels, allKindsMultiplyAlikeForEveryNumberOfRows) {
    std::mt19937 random(3);
    const int outputs = 111, inputs = 192;
    std::vector<std::int8_t> weights(outputs * (inputs + 1));
    for (auto& weight : weights) weight = static_cast<std::int8_t>(int(random() % 255) - 127);
    const PackedMatrix matrix(outputs, inputs, weights, std::vector<double>(outputs, 0.01));
    std::vector<std::int8_t> rows(20 * inputs);
    for (auto& value : rows) value = static_cast<std::int8_t>(int(random() % 255) - 127);
    for (const int count : {1, 2, 3, 4, 5, 7, 8, 9, 13, 20}) {
        std::vector<float> expected(count * matrix.paddedOutputs());
        kPortableKernels->multiply(matrix, rows.data(), inputs, count, expected.data());
        for (const Kernels* kernels : availableKernels()) {
            std::vector<float> out(expected.size());
            kernels->multiply(matrix, rows.data(), inputs, count, out.data());
            for (std::size_t i = 0; i < out.size(); ++i) {
                ASSERT_NEAR(out[i], expected[i], 1e-2) << kernels->name << " " << count;
            }
        }
    }
}

TEST(Kernels, cellFollowsTheLstmEquations) {
    for (const Kernels* kernels : availableKernels()) {
        std::vector<float> gates(4 * 16), state(16);
        std::vector<std::int8_t> output(16);
        for (int i = 0; i < 16; ++i) {
            gates[i] = 0.5f;     // candidate: tanh(0.5) = 0.46212
            gates[16 + i] = 1;   // input: 0.73106
            gates[32 + i] = -1;  // forget: 0.26894
            gates[48 + i] = 2;   // output: 0.88080
            state[i] = static_cast<float>(i) / 4;
        }
        kernels->lstmCell(gates.data(), 16, state.data(), output.data());
        // 0 * 0.26894 + 0.46212 * 0.73106 = 0.33784; tanh(0.33784) * 0.88080 * 127 = 36.4
        EXPECT_NEAR(state[0], 0.33784, 2e-4) << kernels->name;
        EXPECT_EQ(output[0], 36) << kernels->name;
        // 2 * 0.26894 + 0.33784 = 0.87572; tanh = 0.70450; * 0.88080 * 127 = 78.8
        EXPECT_NEAR(state[8], 0.87572, 2e-4) << kernels->name;
        EXPECT_EQ(output[8], 79) << kernels->name;
    }
}

TEST(Kernels, allKindsConvolveAlike) {
    std::mt19937 random(5);
    std::vector<std::int8_t> weights(16 * 10);
    for (auto& weight : weights) weight = static_cast<std::int8_t>(int(random() % 255) - 127);
    const auto matrix =
        PackedMatrix(16, 9, weights, std::vector<double>(16, 0.003)).withEveryFourthIgnored();
    constexpr int kSteps = 7;
    std::vector<std::int8_t> image((kSteps * 3 + 3) * Kernels::kColumnBytes);
    for (auto& value : image) value = static_cast<std::int8_t>(int(random() % 255) - 127);
    std::vector<std::int8_t> expected(kSteps * 12 * 16);
    kPortableKernels->convolve(matrix, image.data(), kSteps, expected.data());
    for (const Kernels* kernels : availableKernels()) {
        std::vector<std::int8_t> out(expected.size());
        kernels->convolve(matrix, image.data(), kSteps, out.data());
        for (std::size_t i = 0; i < out.size(); ++i) {
            ASSERT_NEAR(out[i], expected[i], 1) << kernels->name << " at " << i;
        }
    }
}

}  // namespace
}  // namespace tandrel
