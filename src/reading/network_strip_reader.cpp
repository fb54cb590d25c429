#include "reading/network_strip_reader.h"

#include <cmath>

#include "reading/letter_search.h"
#include "reading/strip_text.h"

namespace tandrel {

NetworkStripReader::NetworkStripReader(LineModel model, const Kernels& kernels)
    : model_(std::move(model)), kernels_(kernels) {}

Result<std::vector<StripText>> NetworkStripReader::read(std::span<const Strip> strips) {
    NetworkRunner runner(model_, kernels_);
    const auto scores = runner.run(strips);
    std::vector<StripText> texts;
    for (std::size_t i = 0; i < strips.size(); ++i) {
        const auto found = findLetters(scores[i], model_.output.outputs(), model_.noLetter);
        texts.push_back(composeText(strips[i], found, model_.letters));
    }
    return texts;
}

}  // namespace tandrel
