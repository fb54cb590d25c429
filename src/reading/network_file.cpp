#include "reading/network_file.h"

#include <cmath>

#include <fmt/format.h>

namespace tandrel {

namespace {

constexpr int kDeepest = 8;
constexpr std::size_t kMostLayers = 64;
constexpr std::uint32_t kMostOutputs = 4096;
constexpr std::size_t kLongestName = 1000;
constexpr int kGates = 4;
// Real networks stay below 10; with this bound no sum leaves the range of a float.
constexpr double kLargestScale = 1e4;
constexpr std::uint8_t kIntegerWeights = 1;
constexpr std::int32_t kOwnLearningRates = 64;

struct Weights {
    std::uint32_t outputs = 0;
    std::uint32_t inputs = 0;  // without the bias
    std::vector<std::int8_t> values;
    std::vector<double> scales;
};

Result<void> appendWeights(ByteReader& bytes, Weights& all) {
    const auto mode = TRY(bytes.read<std::uint8_t>());
    if (!(mode & kIntegerWeights)) return fail("The network's weights are not 8-bit integers.");
    const auto outputs = TRY(bytes.read<std::uint32_t>());
    const auto columns = TRY(bytes.read<std::uint32_t>());
    TRY(bytes.read<std::int8_t>());  // the matrix's default element
    if (outputs == 0 || outputs > kMostOutputs || columns < 2 ||
        columns > PackedMatrix::kMostInputs + 1u) {
        return fail(fmt::format("The network has a layer of {} x {}.", outputs, columns));
    }
    if (all.inputs != 0 && all.inputs != columns - 1) {
        return fail("The gates of a layer differ in size.");
    }
    const auto values = TRY(bytes.take(std::size_t{outputs} * columns));
    const auto scaleCount = TRY(bytes.read<std::uint32_t>());
    // Files round the number of scales up to a multiple of what some processor likes.
    if (scaleCount < outputs || scaleCount > kMostOutputs) {
        return fail("The network has a wrong number of scales.");
    }
    for (std::uint32_t i = 0; i < scaleCount; ++i) {
        const auto scale = TRY(bytes.read<double>());
        if (!(std::abs(scale) <= kLargestScale)) return fail("The network has an absurd scale.");
        if (i < outputs) all.scales.push_back(scale);
    }
    all.outputs += outputs;
    all.inputs = columns - 1;
    for (const std::uint8_t value : values) all.values.push_back(static_cast<std::int8_t>(value));
    return {};
}

Result<PackedMatrix> parseWeights(ByteReader& bytes, int matrices) {
    Weights all;
    for (int i = 0; i < matrices; ++i) TRY_VOID(appendWeights(bytes, all));
    return PackedMatrix(static_cast<int>(all.outputs), static_cast<int>(all.inputs), all.values,
                        all.scales);
}

Result<void> parseLayer(ByteReader& bytes, int depth, std::vector<NetworkLayer>& layers);

Result<void> parseHeldLayers(ByteReader& bytes, int depth, std::int32_t flags,
                             const std::string& kind, std::vector<NetworkLayer>& layers) {
    layers.push_back({.kind = "(" + kind, .weights = {}});
    const auto count = TRY(bytes.read<std::uint32_t>());
    if (count > kMostLayers) return fail("The network has too many layers.");
    for (std::uint32_t i = 0; i < count; ++i) TRY_VOID(parseLayer(bytes, depth + 1, layers));
    if (flags & kOwnLearningRates) {
        const auto rates = TRY(bytes.read<std::uint32_t>());
        TRY(bytes.take(std::size_t{rates} * sizeof(float)));
    }
    layers.push_back({.kind = ")", .weights = {}});
    return {};
}

Result<void> parseLayer(ByteReader& bytes, int depth, std::vector<NetworkLayer>& layers) {
    if (depth > kDeepest || layers.size() > kMostLayers) {
        return fail("The network's layers are nested too deeply.");
    }
    TRY(bytes.read<std::int8_t>());  // the kind as a number; since 2017 it follows as a name
    NetworkLayer layer;
    layer.kind = TRY(bytes.text(kLongestName));
    TRY(bytes.take(2));  // training state, needs backpropagation
    const auto flags = TRY(bytes.read<std::int32_t>());
    layer.inputs = TRY(bytes.read<std::int32_t>());
    layer.outputs = TRY(bytes.read<std::int32_t>());
    TRY(bytes.read<std::int32_t>());  // number of weights
    TRY(bytes.text(kLongestName));    // the layer's own name
    if (layer.kind == "Series" || layer.kind == "XYTranspose" || layer.kind == "RTLReversed") {
        return parseHeldLayers(bytes, depth, flags, layer.kind, layers);
    }
    if (layer.kind == "Input") {
        TRY(bytes.take(5 * sizeof(std::int32_t)));  // the shape, known from the layers below
    } else if (layer.kind == "Convolve" || layer.kind == "Maxpool") {
        const auto across = TRY(bytes.read<std::int32_t>());
        const auto down = TRY(bytes.read<std::int32_t>());
        layer.kind += fmt::format(" {} {}", across, down);
    } else if (layer.kind == "Tanh" || layer.kind == "Softmax") {
        layer.weights = TRY(parseWeights(bytes, 1));
    } else if (layer.kind == "LSTM" || layer.kind == "SummLSTM") {
        TRY(bytes.read<std::int32_t>());  // the inputs once more
        layer.weights = TRY(parseWeights(bytes, kGates));
    } else {
        return fail(fmt::format("The network has a layer of an unknown kind, \"{}\".", layer.kind));
    }
    layers.push_back(std::move(layer));
    return {};
}

}  // namespace

Result<NetworkFile> parseNetwork(std::span<const std::uint8_t> component) {
    ByteReader bytes(component);
    NetworkFile network;
    TRY_VOID(parseLayer(bytes, 0, network.layers));
    TRY(bytes.text(kLongestName));              // the network as its author wrote it
    TRY(bytes.take(3 * sizeof(std::int32_t)));  // training flags, iterations, samples
    network.noLetter = TRY(bytes.read<std::int32_t>());
    return network;
}

}  // namespace tandrel
