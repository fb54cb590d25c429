#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/json.h"
#include "payments/payment_details.h"
#include "platform/text_recognizer.h"

// Tells from the text on the phone's screen whether an action could pay, buy, subscribe or send
// money. Pure functions; any thread. A "character" in a limit is a grapheme cluster.
namespace tandrel::PaymentGuard {

// One recognised line of text, trimmed; its box in pixels of the frame, origin top left.
struct Line {
    std::string text;
    double x = 0;
    double y = 0;
    double w = 0;
    double h = 0;

    bool operator==(const Line&) const = default;
};

// Pixels.
struct FrameSize {
    double width = 0;
    double height = 0;

    bool operator==(const FrameSize&) const = default;
};

enum class Kind { tap, swipe, enter, type };

// The kind of that name; none for any other text.
std::optional<Kind> kind(std::string_view name);

struct Action {
    Kind kind = Kind::tap;
    // The point of a tap or the start of a swipe, as fractions of the frame.
    std::optional<double> x = {};
    std::optional<double> y = {};
    // The end of a swipe.
    std::optional<double> x2 = {};
    std::optional<double> y2 = {};
    // What a "type" action types.
    std::optional<std::string> text = {};

    // A swipe so short that the phone takes it for a tap.
    bool isTinySwipe() const;

    bool operator==(const Action&) const = default;
};

// The lines of a list of records {"text", "conf", "x", "y", "w", "h"}, in its order. Dropped are
// records without text, and those whose "conf" is there but not above 0.3.
std::vector<Line> lines(const Json& records);
// The same for records as the recogniser gives them.
std::vector<Line> lines(const std::vector<TextRecord>& records);
// A record that holds an amount must not be lost for being read badly: its confidence is raised to
// just above what `lines` drops.
std::vector<TextRecord> keepingAmounts(std::vector<TextRecord> records);

std::vector<std::string> texts(const std::vector<Line>& lines);

// How far beside its box, in pixels, a line is still hit by a tap.
double tolerance(FrameSize frame);
// The text of the smallest line under the point; of equal ones the first. None without a point or a
// frame.
std::optional<std::string> label(std::optional<double> x, std::optional<double> y,
                                 const std::vector<Line>& lines, FrameSize frame);

// Whether the texts are those of a screen on which something is paid.
bool paymentScreen(const std::vector<std::string>& texts);

// Why the owner must be asked, in words; none when the action does not pay.
std::optional<std::string> assess(const std::vector<Line>& lines, FrameSize frame,
                                  const Action& action);

}  // namespace tandrel::PaymentGuard
