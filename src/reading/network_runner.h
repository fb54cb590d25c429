#pragma once

#include <span>
#include <vector>

#include "reading/column_layer.h"
#include "reading/kernels.h"
#include "reading/line_model.h"
#include "reading/strip.h"

namespace tandrel {

// What the network says of one strip: for each step of three columns a row of logarithmic weights,
// one for each class.
struct StripScores {
    static constexpr int kColumnsPerStep = Kernels::kPool;
    int steps = 0;
    int rowFloats = 0;  // from one step's row to the next; at least the number of classes
    std::span<const float> values;

    std::span<const float> at(int step) const {
        return values.subspan(static_cast<std::size_t>(step) * rowFloats,
                              static_cast<std::size_t>(rowFloats));
    }
};

// Runs the network over several strips at once: at each step the weights are fetched once for all
// strips that still go on. One thread; the model may be shared.
class NetworkRunner {
 public:
    // Both must outlive the runner.
    NetworkRunner(const LineModel& model, const Kernels& kernels)
        : model_(model), kernels_(kernels), down_(model, kernels) {}

    // Scores of each strip, in their order; valid until the next call.
    std::vector<StripScores> run(std::span<const Strip> strips);

 private:
    using Activations = std::vector<std::int8_t>;
    enum class Direction { kRight, kLeft };

    void convolve(std::span<const Strip> strips);
    void runAlong(const PackedMatrix& gates, Direction direction, const Activations& inputs,
                  Activations& outputs);

    const LineModel& model_;
    const Kernels& kernels_;
    ColumnLayer down_;
    std::vector<int> steps_;      // of each strip
    std::vector<int> firstStep_;  // where each strip's steps begin among those of all
    std::vector<int> byLength_;   // indices of the strips, the longest first
    int totalSteps_ = 0;
    Activations image_;
    Activations pooled_;  // kPooledRows x 16 for each step
    Activations columns_;
    Activations right_;
    Activations left_;
    std::vector<float> sums_;
    std::vector<float> scores_;
};

}  // namespace tandrel
