#include "text/measured.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <string_view>

#include "platform/linux/linux_text_recognizer.h"
#include "reading/drawn_frame.h"

namespace tandrel {

namespace {

double processorMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

double millisecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

template <typename Work>
double milliseconds(Work&& work) {
    const double start = processorMilliseconds();
    work();
    return processorMilliseconds() - start;
}

double peakMegabytes() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.starts_with("VmHWM:")) return std::stod(line.substr(6)) / 1024;
    }
    return 0;
}

double share(int part, int whole) { return whole ? static_cast<double>(part) / whole : 1.0; }

PixelBuffer someText() {
    DrawnFrame frame(600, 120, 2, kWhite);
    frame.text(20, 40, "Two lines");
    frame.text(200, 40, "of text");
    return frame.frame();
}

}  // namespace

void Times::add(const Times& other) {
    for (auto member :
         {&Times::cold, &Times::same, &Times::rowChanged, &Times::scrolledBy, &Times::coldPassed}) {
        this->*member += other.*member;
    }
}

Measured measureOwn(const FrameSet& set, Details details) {
    Measured all{.score = {}, .times = {}, .frames = static_cast<int>(set.frames.size())};
    for (const KnownFrame& frame : set.frames) {
        const auto recognizer = *makeTextRecognizer();
        // Loads the model, which happens once in the life of a program.
        recognizer->read(someText()).value();
        const PixelBuffer again = frame.picture.copy();
        const PixelBuffer changed = withOneRowChanged(frame.picture);
        const PixelBuffer moved = scrolled(frame.picture);
        ReadText text;
        Times times;
        const auto start = std::chrono::steady_clock::now();
        times.cold = milliseconds([&] { text = recognizer->read(frame.picture).value(); });
        times.coldPassed = millisecondsSince(start);
        times.same = milliseconds([&] { recognizer->read(again).value(); });
        times.rowChanged = milliseconds([&] { recognizer->read(changed).value(); });
        // From the same frame as the changed row.
        recognizer->read(frame.picture).value();
        times.scrolledBy = milliseconds([&] { recognizer->read(moved).value(); });
        all.times.add(times);
        all.score.add(scoreFrame(frame, text.records, details));
    }
    return all;
}

Measured measureWith(TextRecognizer& recognizer, const FrameSet& set) {
    Measured all{.score = {}, .times = {}, .frames = static_cast<int>(set.frames.size())};
    for (const KnownFrame& frame : set.frames) {
        ReadText text;
        const auto start = std::chrono::steady_clock::now();
        const double time = milliseconds([&] { text = recognizer.read(frame.picture).value(); });
        all.times.add({time, time, time, time, millisecondsSince(start)});
        all.score.add(scoreFrame(frame, text.records, Details::kNone));
    }
    return all;
}

double measureMemory() {
    const FrameSet set = drawScreens(6, DrawnUse::kTuning);
    const double before = peakMegabytes();
    const auto recognizer = *makeTextRecognizer();
    for (const KnownFrame& frame : set.frames) recognizer->read(frame.picture).value();
    return peakMegabytes() - before;
}

void printScore(const char* who, const Measured& measured) {
    const Score& s = measured.score;
    std::printf(
        "  %-7s lines %d: exact %.3f, similar %.3f | amounts %d: exact %.3f, wrong %d | "
        "pay labels %d of %d | junk %.2f a frame, merged %d\n",
        who, s.lines, share(s.exact, s.lines), share(s.similar, s.lines), s.amounts,
        share(s.exactAmounts, s.amounts), s.wrongAmounts, s.exactPayLabels, s.payLabels,
        share(s.junk, measured.frames), s.merged);
}

void printTimes(const char* who, const Measured& measured) {
    const Times& t = measured.times;
    const double n = measured.frames;
    std::printf(
        "  %-7s processor ms a frame: cold %.1f, same again %.2f, one row changed %.2f, "
        "scrolled %.1f; cold on the clock %.1f\n",
        who, t.cold / n, t.same / n, t.rowChanged / n, t.scrolledBy / n, t.coldPassed / n);
}

void printRatios(const Measured& own, const Measured& other) {
    const Times &a = own.times, &b = other.times;
    std::printf("  times faster: cold %.1f, same again %.0f, one row changed %.0f, scrolled %.0f\n",
                b.cold / a.cold, b.same / a.same, b.rowChanged / a.rowChanged,
                b.scrolledBy / a.scrolledBy);
}

void printGoals(const GoalInput& in) {
    struct Goal {
        const char* what;
        double least, aim, reached;
    };
    const Score& real = in.real.score;
    const Times &own = in.real.times, &other = in.realOther.times;
    const int wrong =
        real.wrongAmounts + in.amounts.score.wrongAmounts + in.screens.score.wrongAmounts;
    const int merged = real.merged + in.amounts.score.merged + in.screens.score.merged;
    // Where less is better both goals are below zero and so is what is reached.
    const Goal goals[] = {
        // clang-format off
        {"real: lines exact",                           0.88,  0.94,  share(real.exact, real.lines)},
        {"real: lines at 0.8 similarity",               0.96,  0.99,  share(real.similar, real.lines)},
        {"real: labels of pay buttons exact",           0.947, 1,     share(real.exactPayLabels, real.payLabels)},
        {"amounts exact, sheets held back",             0.97,  0.995, share(in.amounts.score.exactAmounts, in.amounts.score.amounts)},
        {"wrong amounts above 0.5, all sets",           0,     0,     -wrong * 1.0},
        {"merged columns, all sets",                    0,     0,     -merged * 1.0},
        {"real: junk records a screen",                 -0.5,  -0.1,  -share(real.junk, in.real.frames)},
        {"real: cold, times faster",                    6,     12,    other.cold / own.cold},
        {"real: same again, times faster",              80,    200,   other.same / own.same},
        {"real: one row changed, times faster",         50,    100,   other.rowChanged / own.rowChanged},
        {"longest hard frame, s",                       -2,    -2,    -in.longestSeconds},
        {"memory of the reader, MB",                    -80,   -40,   -in.megabytes},
        // clang-format on
    };
    std::printf("%-42s %9s %9s %9s\n", "to reach", "at least", "aim", "reached");
    for (const Goal& goal : goals) {
        if (in.real.frames == 0 && std::string_view(goal.what).starts_with("real")) continue;
        std::printf("%-42s %9g %9g %9.3f  %s\n", goal.what, std::abs(goal.least),
                    std::abs(goal.aim), std::abs(goal.reached),
                    goal.reached >= goal.aim     ? "aim"
                    : goal.reached >= goal.least ? "yes"
                                                 : "NO");
    }
}

}  // namespace tandrel
