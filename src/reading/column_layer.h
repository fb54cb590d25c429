#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "reading/kernels.h"
#include "reading/line_model.h"

namespace tandrel {

// The LSTM down each column of what the convolution gives. Most columns begin with paper; since its
// outcome is always the same, each is computed only from its first row of ink on. One thread; the
// model may be shared.
class ColumnLayer {
 public:
    using Activations = std::vector<std::int8_t>;
    static constexpr int kPooled = PackedMatrix::kGroup;  // outputs of the convolution
    static constexpr std::size_t kColumnBytes = std::size_t{Kernels::kPooledRows} * kPooled;

    // Both must outlive the layer.
    ColumnLayer(const LineModel& model, const Kernels& kernels);

    // `pooled` holds kPooledRows x 16 bytes for each column; afterwards `outputs` holds a row of
    // `lstmSize(model.down)` bytes for each.
    void run(std::span<const std::int8_t> pooled, Activations& outputs);

 private:
    static constexpr int kColumnsAtOnce = 32;
    // After so many rows of paper.
    struct State {
        std::vector<float> cells;
        Activations output;
    };

    void readPaper();
    int paperRowsOf(const std::int8_t* column) const;
    void runFrom(int firstRow, std::span<const int> columns, const std::int8_t* pooled,
                 std::int8_t* outputs);

    const PackedMatrix& gates_;
    const PackedMatrix& convolution_;
    const Kernels& kernels_;
    const int size_;
    Activations paper_;  // a column of it, pooled
    std::array<State, Kernels::kPooledRows + 1> afterPaper_;
    std::array<std::vector<int>, Kernels::kPooledRows + 1> byPaperRows_;
    Activations rows_;
    std::vector<float> cells_;
    std::vector<float> sums_;
};

}  // namespace tandrel
