#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/clock.h"
#include "hid/report.h"

namespace tandrel {

// One report and how long to wait before the next one. Reports are delivered without waiting for
// the phone, so these waits are what paces it.
struct Step {
    Report report;
    Duration pause{};
    // Where the report puts the pointer; set for absolute pointer reports.
    std::optional<ScreenPoint> pointer = std::nullopt;
};

// The reports of one action, in order. Each starts and ends with everything up.
using Sequence = std::vector<Step>;

// A relative motion in mouse counts.
struct Distance {
    int dx = 0;
    int dy = 0;
};

struct Drag {
    ScreenPoint from;
    ScreenPoint to;
    double durationSeconds = 0;
};

// In all of these `step` is the pause between two reports in seconds, more than 0.
Sequence moveSequence(ScreenPoint to, double step);
Sequence tapSequence(ScreenPoint at, double holdSeconds, double step);
// At least two points after the first, evenly spaced in place and time; the last one is `to`.
Sequence swipeSequence(const Drag& drag, double step);
// Cut into pieces that a report can carry, both axes at once; nothing for no distance.
Sequence nudgeSequence(Distance distance, double step);
Sequence clickSequence(double step);
Sequence typeSequence(std::span<const Keymap::Stroke> strokes, double step);
Sequence consumerSequence(std::uint16_t usage, double step);

}  // namespace tandrel
