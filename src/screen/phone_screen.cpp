#include "screen/phone_screen.h"

#include <algorithm>
#include <numeric>

#include "base/regex.h"
#include "base/unicode.h"
#include "screen/snapshot.h"

namespace tandrel {
namespace {

constexpr double kDarkest = 0.03;  // a frame below it, without text, is a sleeping screen
// A lock screen shows little besides its clock and date; more lines are a clock within an app.
constexpr std::size_t kMostLockScreenLines = 10;
constexpr int kLumaWidth = 24;  // pixels of the thumbnail that is averaged
constexpr int kLumaHeight = 52;

// What a phone says when it wants to be unlocked, anywhere in a line.
const Regex& lockPrompt() {
    static const Regex pattern(R"re((?i)\b(swipe up to (open|unlock)|)re"
                               R"re(enter passcode|)re"
                               R"re(press home to (open|unlock)|)re"
                               R"re(unlock iphone|)re"
                               R"re(iphone (is disabled|unavailable)|)re"
                               R"re(security lockout|)re"
                               R"re(try again in \d+ minute))re",
                               Regex::Case::sensitive);
    return pattern;
}

// The whole line is a time: 9:41, 21.05.
const Regex& clockLine() {
    static const Regex pattern(R"re(^\d{1,2}[:.]\d{2}$)re", Regex::Case::sensitive);
    return pattern;
}

// The whole line is a date: Tuesday 9 January; Tuesday, January 9; Tuesday 9. January.
const Regex& dateLine() {
    static const Regex pattern(R"re((?i)^(mon|tues|wednes|thurs|fri|satur|sun)day,?\s+)re"
                               R"re((\d{1,2}\.?\s+[a-z]+|[a-z]+\s+\d{1,2})$)re",
                               Regex::Case::sensitive);
    return pattern;
}

bool anyMatches(const std::vector<std::string>& lines, const Regex& pattern) {
    return std::ranges::any_of(lines, [&](const std::string& line) { return pattern.has(line); });
}

std::vector<std::string> withoutBlanks(const std::vector<std::string>& lines) {
    std::vector<std::string> result;
    for (const std::string& line : lines) {
        if (std::string text = trimmed(line); !text.empty()) result.push_back(std::move(text));
    }
    return result;
}

}  // namespace

std::string_view name(PhoneScreen screen) {
    switch (screen) {
        case PhoneScreen::unknown:
            return "unknown";
        case PhoneScreen::off:
            return "off";
        case PhoneScreen::locked:
            return "locked";
        case PhoneScreen::awake:
            return "awake";
    }
    return "unknown";
}

std::optional<double> meanLuma(const PixelBuffer& frame) {
    const auto grey = thumbnailOf(frame, kLumaWidth, kLumaHeight);
    if (!grey) return std::nullopt;
    const int sum = std::accumulate(grey->begin(), grey->end(), 0);
    return sum / double(kLumaWidth * kLumaHeight) / 255;
}

// The order is meaning: a black frame without text is off whatever else holds, and a prompt counts
// before the clock does.
PhoneScreen classify(const std::vector<std::string>& lines, std::optional<double> meanLuma) {
    const std::vector<std::string> texts = withoutBlanks(lines);
    if (texts.empty() && meanLuma && *meanLuma < kDarkest) return PhoneScreen::off;
    if (anyMatches(texts, lockPrompt())) return PhoneScreen::locked;
    if (texts.size() <= kMostLockScreenLines && anyMatches(texts, clockLine()) &&
        anyMatches(texts, dateLine())) {
        return PhoneScreen::locked;
    }
    if (texts.empty() && !meanLuma) return PhoneScreen::unknown;
    return PhoneScreen::awake;
}

}  // namespace tandrel
