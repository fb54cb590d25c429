#pragma once

#include "text/score.h"

namespace tandrel {

// Processor time in milliseconds, of all frames together. It is what one thread takes, however many
// share the work and whoever else uses the machine.
struct Times {
    double cold = 0;
    double same = 0;
    double rowChanged = 0;
    double scrolledBy = 0;
    double coldPassed = 0;  // on the clock, with two threads where two processors are free

    void add(const Times& other);
};

struct Measured {
    Score score;
    Times times;
    int frames = 0;
};

// Each frame is read by a recogniser that has seen nothing yet, then again, changed and scrolled.
Measured measureOwn(const FrameSet& set, Details details);
// Each frame is read once, by a recogniser that remembers nothing.
Measured measureWith(TextRecognizer& recognizer, const FrameSet& set);
// The process's peak of resident memory before and after a recogniser was made and used, in MB;
// call it before Tesseract runs in the process.
double measureMemory();

// The longest that any of the frames made to be hard took on the clock, in seconds; prints each.
double measureHardFrames();

void printScore(const char* who, const Measured& measured);
void printTimes(const char* who, const Measured& measured);
void printRatios(const Measured& own, const Measured& other);

// What decides whether the reader is good enough.
struct GoalInput {
    Measured real, realOther, amounts, screens, screensOther;
    double megabytes;
    double longestSeconds;
};
void printGoals(const GoalInput& input);

}  // namespace tandrel
