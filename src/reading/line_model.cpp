#include "reading/line_model.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <fmt/format.h>

#include "base/unicode.h"
#include "reading/network_file.h"

namespace tandrel {

namespace {

// Components of a traineddata file by their place in its table of offsets.
constexpr std::size_t kNetwork = 17;
constexpr std::size_t kLetters = 21;
constexpr std::size_t kClasses = 22;
constexpr std::int32_t kMostComponents = 64;
constexpr std::uint32_t kMostLetters = 4096;
constexpr int kConvolutionTaps = 9;

using View = std::span<const std::uint8_t>;

struct Components {
    View network;
    View letters;
    View classes;
};

// A component ends where the next one begins.
Result<Components> parseComponents(View file) {
    ByteReader bytes(file);
    const auto count = TRY(bytes.read<std::int32_t>());
    if (count <= static_cast<std::int32_t>(kClasses) || count > kMostComponents) {
        return fail("It is not a traineddata file.");
    }
    std::vector<std::int64_t> offsets;
    for (std::int32_t i = 0; i < count; ++i) offsets.push_back(TRY(bytes.read<std::int64_t>()));
    const auto size = static_cast<std::int64_t>(file.size());
    auto component = [&](std::size_t index) -> Result<View> {
        const std::int64_t begin = offsets[index];
        if (begin < 0) return fail("It holds no LSTM network.");
        if (begin > size) return fail("The file ends too early.");
        std::int64_t end = size;
        for (const std::int64_t offset : offsets) {
            if (offset > begin && offset < end) end = offset;
        }
        return file.subspan(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
    };
    return Components {
        TRY(component(kNetwork))
        , TRY(component(kLetters))
        , TRY(component(kClasses))
    };
}

// The letters, one a line up to the first blank, after a line with their number. "NULL" is a space.
std::vector<std::string> parseLetters(View component) {
    std::string_view rest(reinterpret_cast<const char*>(component.data()), component.size());
    std::vector<std::string> letters;
    rest.remove_prefix(std::min(rest.size(), rest.find('\n') + 1));
    while (!rest.empty() && letters.size() < kMostLetters) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
        const std::string_view letter = line.substr(0, line.find(' '));
        letters.push_back(letter == "NULL" ? " " : std::string(letter));
    }
    return letters;
}

// The letter of each class. The table gives the classes of each letter in turn; scripts with many
// letters spell one with several classes.
Result<std::vector<std::string>> lettersByClass(View component,
                                                std::span<const std::string> letters, int classes) {
    ByteReader bytes(component);
    std::vector<std::string> byClass(static_cast<std::size_t>(classes));
    const auto count = TRY(bytes.read<std::uint32_t>());
    if (count > kMostLetters) return fail("It has too many letters.");
    for (std::uint32_t i = 0; i < count; ++i) {
        TRY(bytes.read<std::int8_t>());  // whether the letter stands for itself
        const auto length = TRY(bytes.read<std::uint32_t>());
        if (length != 1) return fail("Its letters have several codes.");
        const auto code = TRY(bytes.read<std::int32_t>());
        if (code < 0 || code >= classes) return fail("It has a letter without a class.");
        // The second and third are placeholders that stand for no letter.
        const bool isPlaceholder = i == 1 || i == 2;
        if (i >= letters.size() || isPlaceholder || !byClass[code].empty()) continue;
        if (!isUtf8(letters[i])) return fail("It has a letter that is not UTF-8.");
        byClass[code] = letters[i];
    }
    return byClass;
}

// The layers of the only network that the runner knows, in the order in which they are applied.
constexpr std::array<std::string_view, 17> kExpectedLayers = {
    "(Series",      "Input",    "(Series", "Convolve 1 1", "Tanh",         ")",    "Maxpool 3 3",
    "(XYTranspose", "SummLSTM", ")",       "LSTM",         "(RTLReversed", "LSTM", ")",
    "LSTM",         "Softmax",  ")"};

// Moves the weights of the layers into the model if they are the expected ones and fit each other.
Result<LineModel> modelOf(NetworkFile& network) {
    std::vector<PackedMatrix*> targets;
    LineModel model;
    for (PackedMatrix* matrix : {&model.convolution, &model.down, &model.right, &model.left,
                                 &model.rightAgain, &model.output}) {
        targets.push_back(matrix);
    }
    std::vector<std::string_view> kinds;
    for (const NetworkLayer& layer : network.layers) kinds.push_back(layer.kind);
    if (!std::ranges::equal(kinds, kExpectedLayers)) {
        return fail(fmt::format("Its network has other layers: {}.", fmt::join(kinds, " ")));
    }
    auto target = targets.begin();
    for (NetworkLayer& layer : network.layers) {
        if (layer.weights.outputs() > 0) **target++ = std::move(layer.weights);
    }
    int inputs = kConvolutionTaps;
    for (const PackedMatrix* matrix : targets) {
        const bool isLstm = matrix != targets.front() && matrix != targets.back();
        const int outputs = isLstm ? lstmSize(*matrix) : matrix->outputs();
        const int ownOutputs = isLstm ? outputs : 0;
        const bool fitsKernels = matrix == targets.back() || outputs % PackedMatrix::kGroup == 0;
        if (matrix->inputs() != inputs + ownOutputs || !fitsKernels) {
            return fail("Its layers do not fit each other.");
        }
        inputs = outputs;
    }
    if (model.convolution.outputs() != PackedMatrix::kGroup) {
        return fail("Its convolution has another size.");
    }
    if (network.noLetter < 0 || network.noLetter >= model.output.outputs()) {
        return fail("It has no class for \"no letter\".");
    }
    model.convolution = model.convolution.withEveryFourthIgnored();
    model.noLetter = network.noLetter;
    return model;
}

}  // namespace

Result<LineModel> parseLineModel(View file) {
    const Components components = TRY(parseComponents(file));
    NetworkFile network = TRY(parseNetwork(components.network));
    LineModel model = TRY(modelOf(network));
    const auto letters = parseLetters(components.letters);
    model.letters = TRY(lettersByClass(components.classes, letters, model.output.outputs()));
    model.letters[static_cast<std::size_t>(model.noLetter)].clear();
    return model;
}

}  // namespace tandrel
