#include "platform/linux/receiver_words.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "base/unicode.h"

namespace tandrel {
namespace {

constexpr std::string_view kInstall =
    "sudo apt install uxplay avahi-daemon gstreamer1.0-plugins-base gstreamer1.0-plugins-good "
    "gstreamer1.0-plugins-bad gstreamer1.0-libav";

// What a line says, in small letters, when something is not installed; the first match counts.
struct Lack {
    std::string_view words;
    std::string_view meaning;
    std::string_view cure;
};
constexpr std::string_view kLacksPart = "the AirPlay receiver lacks a part";
constexpr std::string_view kUnannounced =
    "iPhones cannot find the AirPlay receiver, since no avahi-daemon runs on this computer";
constexpr std::string_view kInstallAvahi =
    "sudo apt install avahi-daemon && sudo systemctl start avahi-daemon";
// clang-format off
constexpr std::array kLacks{
    Lack{"no dns-sd server found",    kUnannounced, kInstallAvahi},
    Lack{"required gstreamer plugin", kLacksPart,   kInstall},
    Lack{"no element \"",             kLacksPart,   kInstall},
};
// clang-format on

bool contains(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

bool tellsOfFailure(const std::string& lowerCasedLine) {
    constexpr std::array words{"error", "fail", "not found", "cannot", "could not", "can't"};
    return std::ranges::any_of(words,
                               [&](const char* word) { return contains(lowerCasedLine, word); });
}

std::string lackToldBy(const std::string& line, const std::string& lowerCasedLine) {
    const auto* lack = std::ranges::find_if(
        kLacks, [&](const Lack& row) { return contains(lowerCasedLine, row.words); });
    if (lack == kLacks.end()) return {};
    return fmt::format("{} ({}): {}", lack->meaning, line, lack->cure);
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
    const std::string text = lowerCased(line);
    if (tellsOfFailure(text)) error_ = line;
    if (lack_.empty()) lack_ = lackToldBy(line, text);
}

std::optional<std::string> ReceiverWords::missingPart() const {
    return lack_.empty() ? std::nullopt : std::optional(lack_);
}

std::string missingReceiver(std::string_view program) {
    return "AirPlay needs the program " + std::string(program) + ": " + std::string(kInstall);
}

}  // namespace tandrel
