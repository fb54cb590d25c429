#pragma once

#include <string>

#include "reading/strip.h"

namespace tandrel {

// How the points and commas of a text compare with the strip's ink.
enum class PointMarks { kSame, kCorrected, kUnlike };

struct PointCheck {
    PointMarks marks = PointMarks::kSame;
    // The ink has more letters than the text: one was lost.
    bool lacksLetters = false;
    std::string text;  // as the ink has it where it could be told, else as it was
};

// Checks a text with figures. Points and commas are what a network loses most easily, but on the
// strip they stand as small marks of their own at the foot of the line, between digits that can be
// counted, and a comma hangs below the line.
PointCheck checkPoints(const Strip& strip, const std::string& text);

}  // namespace tandrel
