#include "platform/linux/receiver_words.h"

#include <algorithm>
#include <array>

#include "base/unicode.h"

namespace tandrel {
namespace {

constexpr std::string_view kInstall =
    "sudo apt install uxplay gstreamer1.0-plugins-base gstreamer1.0-plugins-good "
    "gstreamer1.0-plugins-bad gstreamer1.0-libav";

bool contains(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

bool tellsOfFailure(const std::string& line) {
    constexpr std::array words{"error", "fail", "not found", "cannot", "could not", "can't"};
    const std::string text = lowerCased(line);
    return std::ranges::any_of(words, [&](const char* word) { return contains(text, word); });
}

}  // namespace

void ReceiverWords::add(std::string_view text) {
    for (const char c : text) {
        if (c == '\n') {
            takeLine();
        } else if (line_.size() < kLongestLine && (c == '\t' || (c & 0xe0) != 0)) {
            line_.push_back(c == '\t' ? ' ' : c);
        }
    }
}

void ReceiverWords::takeLine() {
    const std::string line = trimmed(line_);
    line_.clear();
    if (line.empty()) return;
    hasSpoken_ = true;
    last_ = line;
    if (tellsOfFailure(line)) error_ = line;
}

std::optional<std::string> ReceiverWords::missingPart() const {
    const std::string text = lowerCased(error_);
    if (!contains(text, "plugin") && !contains(text, "element")) return std::nullopt;
    return "the AirPlay receiver lacks a part (" + error_ + "): " + std::string(kInstall);
}

std::string missingReceiver(std::string_view program) {
    return "AirPlay needs the program " + std::string(program) + ": " + std::string(kInstall);
}

}  // namespace tandrel
