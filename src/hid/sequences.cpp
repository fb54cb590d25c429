#include "hid/sequences.h"

#include <algorithm>

namespace tandrel {
namespace {

// How long a click or a media key stays down.
constexpr double kClickSeconds = 0.08;
constexpr int kFewestDragPoints = 2;
constexpr int kFarthestPerReport = 127;

Step point(Button button, ScreenPoint at, Duration pause) {
    return {absolutePointerReport(button, at), pause, insideScreen(at)};
}

// Modifiers go down before the key and up after it, as on a real keyboard.
void press(Sequence& sequence, Keymap::Stroke stroke, Duration pause) {
    const Step modifiersAlone{keyboardReport({.code = 0, .modifiers = stroke.modifiers}), pause};
    if (stroke.modifiers != 0) sequence.push_back(modifiersAlone);
    sequence.push_back({keyboardReport(stroke), pause});
    sequence.push_back(modifiersAlone);
    if (stroke.modifiers != 0) sequence.push_back({releasedReport(ReportID::keyboard), pause});
}

}  // namespace

Sequence moveSequence(ScreenPoint to, double step) {
    return {point(Button::up, to, seconds(step))};
}

Sequence tapSequence(ScreenPoint at, double holdSeconds, double step) {
    return {point(Button::up, at, seconds(2 * step)),
            {relativeMouseReport(Button::down), seconds(holdSeconds)},
            {relativeMouseReport(Button::up), seconds(step)}};
}

Sequence swipeSequence(const Drag& drag, double step) {
    const int count = std::max(static_cast<int>(drag.durationSeconds / step), kFewestDragPoints);
    const Duration pause = seconds(drag.durationSeconds / count);
    Sequence sequence = {point(Button::up, drag.from, seconds(2 * step)),
                         {relativeMouseReport(Button::down), seconds(step)}};
    for (int i = 1; i < count; ++i) {
        const double t = static_cast<double>(i) / count;
        const ScreenPoint between = {drag.from.x + (drag.to.x - drag.from.x) * t,
                                     drag.from.y + (drag.to.y - drag.from.y) * t};
        sequence.push_back(point(Button::down, between, pause));
    }
    sequence.push_back(point(Button::down, drag.to, pause));
    sequence.push_back({relativeMouseReport(Button::up), seconds(step)});
    return sequence;
}

Sequence nudgeSequence(Distance distance, double step) {
    const auto piece = [](int counts) {
        return static_cast<std::int8_t>(
            std::clamp(counts, -kFarthestPerReport, kFarthestPerReport));
    };
    Sequence sequence;
    while (distance.dx != 0 || distance.dy != 0) {
        const Motion motion = {piece(distance.dx), piece(distance.dy)};
        sequence.push_back({relativeMouseReport(Button::up, motion), seconds(step)});
        distance.dx -= motion.dx;
        distance.dy -= motion.dy;
    }
    return sequence;
}

Sequence clickSequence(double step) {
    return {{relativeMouseReport(Button::down), seconds(kClickSeconds)},
            {relativeMouseReport(Button::up), seconds(step)}};
}

Sequence typeSequence(std::span<const Keymap::Stroke> strokes, double step) {
    Sequence sequence;
    for (const Keymap::Stroke stroke : strokes) press(sequence, stroke, seconds(step));
    return sequence;
}

Sequence consumerSequence(std::uint16_t usage, double step) {
    return {{consumerReport(usage), seconds(kClickSeconds)},
            {releasedReport(ReportID::consumer), seconds(step)}};
}

}  // namespace tandrel
