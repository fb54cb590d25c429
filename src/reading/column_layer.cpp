#include "reading/column_layer.h"

#include <algorithm>
#include <cstring>

#include "reading/strip.h"

namespace tandrel {

namespace {

constexpr std::int8_t kPaperLevel = 127;

}  // namespace

ColumnLayer::ColumnLayer(const LineModel& model, const Kernels& kernels)
    : gates_(model.down),
      convolution_(model.convolution),
      kernels_(kernels),
      size_(lstmSize(model.down)),
      rows_(static_cast<std::size_t>(kColumnsAtOnce) * gates_.inputs()),
      cells_(static_cast<std::size_t>(kColumnsAtOnce) * size_),
      sums_(static_cast<std::size_t>(kColumnsAtOnce) * gates_.paddedOutputs()) {
    readPaper();
}

void ColumnLayer::readPaper() {
    constexpr int kSteps = 3, kWidth = kSteps * Kernels::kPool;
    Activations image((kWidth + 2) * Kernels::kColumnBytes, 0);
    for (int x = 1; x <= kWidth; ++x) {
        std::fill_n(image.begin() + x * Kernels::kColumnBytes + 1, Strip::kRows, kPaperLevel);
    }
    Activations columns(kSteps * kColumnBytes);
    kernels_.convolve(convolution_, image.data(), kSteps, columns.data());
    // The middle one touches no border.
    paper_.assign(columns.begin() + kColumnBytes, columns.begin() + 2 * kColumnBytes);

    afterPaper_[0] = {std::vector<float>(static_cast<std::size_t>(size_), 0.0f),
                      Activations(static_cast<std::size_t>(size_), 0)};
    Activations row(static_cast<std::size_t>(gates_.inputs()));
    for (int y = 0; y < Kernels::kPooledRows; ++y) {
        State next = afterPaper_[y];
        std::copy_n(paper_.begin() + y * kPooled, kPooled, row.begin());
        std::ranges::copy(next.output, row.begin() + kPooled);
        kernels_.multiply(gates_, row.data(), gates_.inputs(), 1, sums_.data());
        kernels_.lstmCell(sums_.data(), size_, next.cells.data(), next.output.data());
        afterPaper_[y + 1] = std::move(next);
    }
}

int ColumnLayer::paperRowsOf(const std::int8_t* column) const {
    const auto ink = std::ranges::mismatch(std::span(column, kColumnBytes), paper_).in2;
    return static_cast<int>((ink - paper_.begin()) / kPooled);
}

void ColumnLayer::run(std::span<const std::int8_t> pooled, Activations& outputs) {
    const auto count = static_cast<int>(pooled.size() / kColumnBytes);
    outputs.resize(static_cast<std::size_t>(count) * size_);
    for (auto& columns : byPaperRows_) columns.clear();
    for (int column = 0; column < count; ++column) {
        byPaperRows_[paperRowsOf(&pooled[column * kColumnBytes])].push_back(column);
    }
    for (int row = 0; row <= Kernels::kPooledRows; ++row) {
        for (std::span<const int> left = byPaperRows_[row]; !left.empty();) {
            const auto some = left.first(std::min<std::size_t>(left.size(), kColumnsAtOnce));
            runFrom(row, some, pooled.data(), outputs.data());
            left = left.subspan(some.size());
        }
    }
}

void ColumnLayer::runFrom(int firstRow, std::span<const int> columns, const std::int8_t* pooled,
                          std::int8_t* outputs) {
    const auto rowBytes = static_cast<std::size_t>(gates_.inputs());
    const auto size = static_cast<std::size_t>(size_);
    const State& begin = afterPaper_[firstRow];
    for (std::size_t r = 0; r < columns.size(); ++r) {
        std::ranges::copy(begin.output, &rows_[r * rowBytes + kPooled]);
        std::ranges::copy(begin.cells, &cells_[r * size]);
    }
    for (int y = firstRow; y < Kernels::kPooledRows; ++y) {
        for (std::size_t r = 0; r < columns.size(); ++r) {
            std::memcpy(&rows_[r * rowBytes], pooled + columns[r] * kColumnBytes + y * kPooled,
                        kPooled);
        }
        kernels_.multiply(gates_, rows_.data(), gates_.inputs(), static_cast<int>(columns.size()),
                          sums_.data());
        for (std::size_t r = 0; r < columns.size(); ++r) {
            kernels_.lstmCell(&sums_[r * gates_.paddedOutputs()], size_, &cells_[r * size],
                              &rows_[r * rowBytes + kPooled]);
        }
    }
    for (std::size_t r = 0; r < columns.size(); ++r) {
        std::memcpy(outputs + columns[r] * size, &rows_[r * rowBytes + kPooled], size);
    }
}

}  // namespace tandrel
