#pragma once

#include <cstdint>
#include <span>

#include "reading/packed_matrix.h"

namespace tandrel {

// The inner loops of the network for one kind of processor. All kinds compute the same integer
// sums; the curves after them may differ in the last bits of a float.
struct Kernels {
    const char* name;

    // `count` rows of `matrix.inputs()` bytes (a multiple of 4, at most kMostInputs), each
    // `rowBytes` after the last, times the matrix; row r of the result begins at
    // out[r * matrix.paddedOutputs()].
    void (*multiply)(const PackedMatrix& matrix, const std::int8_t* rows, int rowBytes, int count,
                     float* out);

    // One step of an LSTM of `size` cells (a multiple of 16): from the sums of its four gates, one
    // after another, and the cells' state to the new state and the outputs in 1/127.
    void (*lstmCell)(const float* gates, int size, float* state, std::int8_t* output);

    // The convolution, its maximum over 3x3 pixels and its curve for `steps` columns of three
    // pixels. `image` is column by column, kColumnBytes each, with a border of one column and one
    // row at the start and at least that at the end; the matrix has its taps as three quads, one
    // for each image column. Output: kPooledRows x 16 bytes for each step.
    void (*convolve)(const PackedMatrix& matrix, const std::int8_t* image, int steps,
                     std::int8_t* output);

    // Rec. 601 luma, in 1/128, of `count` pixels of blue, green, red and a byte left out.
    void (*toGray)(const std::uint8_t* pixels, int count, std::uint8_t* gray);

    static constexpr int kColumnBytes = 48;
    static constexpr int kPool = 3;
    static constexpr int kPooledRows = 12;
};

// The kinds that this processor can run, the fastest first, the portable one last.
std::span<const Kernels* const> availableKernels();

// Each is null where it was not compiled.
extern const Kernels* const kPortableKernels;
extern const Kernels* const kAvx2Kernels;
extern const Kernels* const kVnniKernels;

}  // namespace tandrel
