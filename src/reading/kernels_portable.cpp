#include <algorithm>
#include <array>
#include <cmath>

#include "reading/kernels.h"

namespace tandrel {

namespace {

constexpr int kGroup = PackedMatrix::kGroup;
constexpr int kQuad = PackedMatrix::kQuad;
using Sums = std::array<std::int32_t, kGroup>;

// A quotient of polynomials that follows tanh to 1e-4 up to where it has reached 1.
float curve(float x) {
    x = std::clamp(x, -4.9f, 4.9f);
    const float y = x * x;
    return x * (135135.f + y * (17325.f + y * (378.f + y))) /
           (135135.f + y * (62370.f + y * (3150.f + y * 28.f)));
}

float sigmoid(float x) { return 0.5f + 0.5f * curve(0.5f * x); }

std::int8_t quantised(float x) { return static_cast<std::int8_t>(std::lrintf(x * 127)); }

// Adds the products of four inputs with their weights for each output of a group.
void addQuad(Sums& sums, const std::int8_t* weights, const std::int8_t* inputs) {
    for (int o = 0; o < kGroup; ++o) {
        for (int k = 0; k < kQuad; ++k) sums[o] += weights[o * kQuad + k] * inputs[k];
    }
}

void multiply(const PackedMatrix& matrix, const std::int8_t* rows, int rowBytes, int count,
              float* out) {
    for (int r = 0; r < count; ++r) {
        const std::int8_t* row = rows + static_cast<std::ptrdiff_t>(r) * rowBytes;
        for (int g = 0; g < matrix.groups(); ++g) {
            Sums sums{};
            const std::int8_t* weights = matrix.group(g);
            for (int q = 0; q < matrix.quads(); ++q) {
                addQuad(sums, weights + q * kGroup * kQuad, row + q * kQuad);
            }
            for (int o = 0; o < kGroup; ++o) {
                const int at = g * kGroup + o;
                *out++ = static_cast<float>(sums[o]) * matrix.scales()[at] + matrix.biases()[at];
            }
        }
    }
}

void lstmCell(const float* gates, int size, float* state, std::int8_t* output) {
    constexpr float kLargestState = 100;
    for (int i = 0; i < size; ++i) {
        const float candidate = curve(gates[i]);
        const float in = sigmoid(gates[size + i]);
        const float forget = sigmoid(gates[2 * size + i]);
        const float out = sigmoid(gates[3 * size + i]);
        state[i] = std::clamp(state[i] * forget + candidate * in, -kLargestState, kLargestState);
        output[i] = quantised(curve(state[i]) * out);
    }
}

void convolve(const PackedMatrix& matrix, const std::int8_t* image, int steps,
              std::int8_t* output) {
    for (int step = 0; step < steps; ++step) {
        for (int y = 0; y < Kernels::kPooledRows; ++y) {
            Sums most;
            most.fill(INT32_MIN);
            for (int position = 0; position < Kernels::kPool * Kernels::kPool; ++position) {
                const int column = step * Kernels::kPool + position % Kernels::kPool;
                const int row = y * Kernels::kPool + position / Kernels::kPool;
                const std::int8_t* taps = image + column * Kernels::kColumnBytes + row;
                Sums sums{};
                for (int q = 0; q < matrix.quads(); ++q) {
                    addQuad(sums, matrix.group(0) + q * kGroup * kQuad,
                            taps + q * Kernels::kColumnBytes);
                }
                for (int o = 0; o < kGroup; ++o) most[o] = std::max(most[o], sums[o]);
            }
            for (int o = 0; o < kGroup; ++o) {
                *output++ = quantised(
                    curve(static_cast<float>(most[o]) * matrix.scales()[o] + matrix.biases()[o]));
            }
        }
    }
}

void toGray(const std::uint8_t* pixels, int count, std::uint8_t* gray) {
    for (int i = 0; i < count; ++i, pixels += 4) {
        gray[i] =
            static_cast<std::uint8_t>((pixels[0] * 15 + pixels[1] * 75 + pixels[2] * 38) >> 7);
    }
}

constexpr Kernels kKernels{"portable", multiply, lstmCell, convolve, toGray};

}  // namespace

const Kernels* const kPortableKernels = &kKernels;

}  // namespace tandrel
