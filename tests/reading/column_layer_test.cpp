#include "reading/column_layer.h"

#include <random>

#include <gtest/gtest.h>

#include "reading/strip.h"

namespace tandrel {
namespace {

constexpr int kPooledBytes = PackedMatrix::kGroup;
constexpr int kCells = 48;

PackedMatrix someWeights(std::mt19937& random, int outputs, int inputs) {
    std::vector<std::int8_t> weights(static_cast<std::size_t>(outputs) * (inputs + 1));
    for (auto& weight : weights) weight = static_cast<std::int8_t>(int(random() % 255) - 127);
    return {outputs, inputs, weights, std::vector<double>(outputs, 0.004)};
}

// The whole column from its first row on, whatever it begins with.
std::vector<std::int8_t> computedWhole(const PackedMatrix& gates, const Kernels& kernels,
                                       const std::int8_t* column) {
    std::vector<std::int8_t> row(static_cast<std::size_t>(gates.inputs()), 0);
    std::vector<float> cells(kCells, 0), sums(static_cast<std::size_t>(gates.paddedOutputs()));
    for (int y = 0; y < Kernels::kPooledRows; ++y) {
        std::copy_n(column + y * kPooledBytes, kPooledBytes, row.begin());
        kernels.multiply(gates, row.data(), gates.inputs(), 1, sums.data());
        kernels.lstmCell(sums.data(), kCells, cells.data(), &row[kPooledBytes]);
    }
    return {row.begin() + kPooledBytes, row.end()};
}

// Of a strip of paper with ink in some columns from some row on, what is left out for being paper
// changes nothing.
TEST(ColumnLayer, paperAboveTheInkIsLeftOutWithoutATrace) {
    std::mt19937 random(7);
    LineModel model;
    model.convolution = someWeights(random, kPooledBytes, 9).withEveryFourthIgnored();
    model.down = someWeights(random, 4 * kCells, kPooledBytes + kCells);
    constexpr int kColumns = 80, kWidth = kColumns * Kernels::kPool;
    std::vector<std::int8_t> image((kWidth + 2) * Kernels::kColumnBytes, 0);
    for (int x = 1; x <= kWidth; ++x) {
        for (int y = 1; y <= Strip::kRows; ++y) {
            // Ink begins ever lower; the first and the last columns have none at all.
            const bool isInk = x > 30 && x < kWidth - 30 && y > x * Strip::kRows / kWidth;
            image[x * Kernels::kColumnBytes + y] =
                static_cast<std::int8_t>(isInk ? int(random() % 255) - 127 : 127);
        }
    }
    for (const Kernels* kernels : availableKernels()) {
        constexpr std::size_t kColumnBytes = Kernels::kPooledRows * kPooledBytes;
        std::vector<std::int8_t> pooled(kColumns * kColumnBytes), outputs;
        kernels->convolve(model.convolution, image.data(), kColumns, pooled.data());
        ColumnLayer(model, *kernels).run(pooled, outputs);
        ASSERT_EQ(outputs.size(), kColumns * kCells);
        for (int column = 0; column < kColumns; ++column) {
            const std::vector<std::int8_t> output(outputs.begin() + column * kCells,
                                                  outputs.begin() + (column + 1) * kCells);
            EXPECT_EQ(output, computedWhole(model.down, *kernels, &pooled[column * kColumnBytes]))
                << kernels->name << ", column " << column;
        }
    }
}

}  // namespace
}  // namespace tandrel
