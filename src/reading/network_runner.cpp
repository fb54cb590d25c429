#include "reading/network_runner.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numeric>

namespace tandrel {

namespace {

std::uint8_t quantile(std::vector<std::uint8_t>& values, std::size_t quarters,
                      std::uint8_t whenEmpty) {
    if (values.empty()) return whenEmpty;
    const auto nth = values.begin() + static_cast<std::ptrdiff_t>(values.size() * quarters / 4);
    std::nth_element(values.begin(), nth, values.end());
    return *nth;
}

// The network's input for every grey level: black and white are what the local extremes of the
// middle row call so, as the network saw it in its training.
std::array<std::int8_t, 256> inputLevels(const Strip& strip) {
    const std::uint8_t* row = strip.row(Strip::kRows / 2);
    std::vector<std::uint8_t> valleys, peaks;
    for (int x = 1; x + 1 < strip.columns;) {
        const int before = row[x - 1], here = row[x];
        int end = x + 1;
        while (end + 1 < strip.columns && row[end] == here) ++end;
        const int after = row[end];
        if (here < before && here <= after) valleys.push_back(row[x]);
        if (here > before && here >= after) peaks.push_back(row[x]);
        x = end;
    }
    float black = quantile(valleys, 1, 0);
    float half = (static_cast<float>(quantile(peaks, 3, 255)) - black) / 2;
    constexpr float kLeastHalf = 10;
    if (half <= kLeastHalf) {
        black = 0;
        half = 127.5f;
    }
    std::array<std::int8_t, 256> levels{};
    for (int v = 0; v < 256; ++v) {
        const float level = 128 * ((static_cast<float>(v) - black) / half - 1);
        levels[v] = static_cast<std::int8_t>(std::lrintf(std::clamp(level, -127.f, 127.f)));
    }
    return levels;
}

}  // namespace

std::vector<StripScores> NetworkRunner::run(std::span<const Strip> strips) {
    steps_.clear();
    firstStep_.clear();
    totalSteps_ = 0;
    for (const Strip& strip : strips) {
        steps_.push_back(strip.columns / StripScores::kColumnsPerStep);
        firstStep_.push_back(totalSteps_);
        totalSteps_ += steps_.back();
    }
    byLength_.resize(strips.size());
    std::iota(byLength_.begin(), byLength_.end(), 0);
    std::ranges::stable_sort(byLength_, [&](int a, int b) { return steps_[a] > steps_[b]; });

    convolve(strips);
    down_.run(pooled_, columns_);
    runAlong(model_.right, Direction::kRight, columns_, right_);
    runAlong(model_.left, Direction::kLeft, right_, left_);
    runAlong(model_.rightAgain, Direction::kRight, left_, right_);

    const int rowFloats = model_.output.paddedOutputs();
    scores_.resize(static_cast<std::size_t>(totalSteps_) * rowFloats);
    kernels_.multiply(model_.output, right_.data(), model_.output.inputs(), totalSteps_,
                      scores_.data());
    std::vector<StripScores> result;
    for (std::size_t i = 0; i < strips.size(); ++i) {
        const std::size_t first = static_cast<std::size_t>(firstStep_[i]) * rowFloats;
        const std::size_t count = static_cast<std::size_t>(steps_[i]) * rowFloats;
        result.push_back({steps_[i], rowFloats, std::span(scores_).subspan(first, count)});
    }
    return result;
}

void NetworkRunner::convolve(std::span<const Strip> strips) {
    constexpr int kColumn = Kernels::kColumnBytes;
    constexpr std::size_t kStepBytes = ColumnLayer::kColumnBytes;
    pooled_.resize(totalSteps_ * kStepBytes);
    for (std::size_t i = 0; i < strips.size(); ++i) {
        const Strip& strip = strips[i];
        const auto levels = inputLevels(strip);
        image_.assign(static_cast<std::size_t>(strip.columns + 2) * kColumn, 0);
        for (int y = 0; y < Strip::kRows; ++y) {
            const std::uint8_t* row = strip.row(y);
            std::int8_t* to = image_.data() + kColumn + y + 1;
            for (int x = 0; x < strip.columns; ++x, to += kColumn) *to = levels[row[x]];
        }
        kernels_.convolve(model_.convolution, image_.data(), steps_[i],
                          pooled_.data() + firstStep_[i] * kStepBytes);
    }
}

void NetworkRunner::runAlong(const PackedMatrix& gates, Direction direction,
                             const Activations& inputs, Activations& outputs) {
    const int size = lstmSize(gates), rowBytes = gates.inputs(), inputBytes = rowBytes - size;
    const std::size_t strips = byLength_.size();
    Activations rows(strips * rowBytes, 0);
    std::vector<float> state(strips * size, 0.0f);
    sums_.resize(strips * gates.paddedOutputs());
    outputs.resize(static_cast<std::size_t>(totalSteps_) * size);
    auto placeOf = [&](int strip, int step) {
        const int at = direction == Direction::kLeft ? steps_[strip] - 1 - step : step;
        return static_cast<std::size_t>(firstStep_[strip] + at);
    };
    std::size_t active = strips;
    for (int step = 0;; ++step) {
        while (active > 0 && steps_[byLength_[active - 1]] <= step) --active;
        if (active == 0) return;
        for (std::size_t r = 0; r < active; ++r) {
            std::memcpy(&rows[r * rowBytes], &inputs[placeOf(byLength_[r], step) * inputBytes],
                        static_cast<std::size_t>(inputBytes));
        }
        kernels_.multiply(gates, rows.data(), rowBytes, static_cast<int>(active), sums_.data());
        for (std::size_t r = 0; r < active; ++r) {
            std::int8_t* output = &rows[r * rowBytes + inputBytes];
            kernels_.lstmCell(&sums_[r * gates.paddedOutputs()], size, &state[r * size], output);
            std::memcpy(&outputs[placeOf(byLength_[r], step) * size], output,
                        static_cast<std::size_t>(size));
        }
    }
}

}  // namespace tandrel
