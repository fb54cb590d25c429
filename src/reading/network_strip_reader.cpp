#include "reading/network_strip_reader.h"

#include <cmath>

#include "reading/letter_search.h"
#include "reading/strip_text.h"

namespace tandrel {

namespace {

constexpr std::size_t kMostIdle = 2;  // as many as threads share a frame

}  // namespace

NetworkStripReader::NetworkStripReader(LineModel model, const Kernels& kernels)
    : model_(std::move(model)), kernels_(kernels) {}

Result<std::vector<StripText>> NetworkStripReader::read(std::span<const Strip> strips) {
    Runner runner = take();
    const auto scores = runner->run(strips);
    std::vector<StripText> texts;
    for (std::size_t i = 0; i < strips.size(); ++i) {
        const auto found = findLetters(scores[i], model_.output.outputs(), model_.noLetter);
        texts.push_back(composeText(strips[i], found, model_.letters));
    }
    giveBack(std::move(runner));
    return texts;
}

NetworkStripReader::Runner NetworkStripReader::take() {
    MutexLock lock(mutex_);
    if (idle_.empty()) return std::make_unique<NetworkRunner>(model_, kernels_);
    Runner runner = std::move(idle_.back());
    idle_.pop_back();
    return runner;
}

void NetworkStripReader::giveBack(Runner runner) {
    MutexLock lock(mutex_);
    if (idle_.size() < kMostIdle) idle_.push_back(std::move(runner));
}

}  // namespace tandrel
