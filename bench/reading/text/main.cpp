#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "base/environment.h"
#include "platform/linux/linux_text_recognizer.h"
#include "text/full_frame_tesseract.h"
#include "text/score.h"

// text_table [--details] [--own] [--frames N]
// Prints how right and how fast frames are read, ours beside Tesseract on the full frame in the
// same run: on the real screenshots in the folder TANDREL_SCREENS and on frames drawn here.
// --details lists what was misread, --own leaves the comparison out.
namespace tandrel {
namespace {

struct Options {
    Details details = Details::kNone;
    bool ownOnly = false;
    int frames = 24;
};

struct Times {
    double cold = 0, same = 0, rowChanged = 0, scrolledBy = 0;

    void add(const Times& other) {
        for (auto member : {&Times::cold, &Times::same, &Times::rowChanged, &Times::scrolledBy}) {
            this->*member += other.*member;
        }
    }
};

double milliseconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::milli> passed =
        std::chrono::steady_clock::now() - start;
    return passed.count();
}

struct Measured {
    Score score;
    Times times;
};

// Each frame is read by a recogniser that has seen nothing yet, then again and changed.
Measured measureOwn(const FrameSet& set, Details details) {
    Measured all;
    for (const KnownFrame& frame : set.frames) {
        const auto recognizer = *makeTextRecognizer();
        // Loads the model, which happens once in the life of a program.
        recognizer->read(PixelBuffer::make(2, 2, [](std::uint8_t*, int) {})).value();
        ReadText text;
        const PixelBuffer again = frame.picture.copy();
        const PixelBuffer changed = withOneRowChanged(frame.picture);
        const PixelBuffer moved = scrolled(frame.picture);
        Times times;
        times.cold = milliseconds([&] { text = recognizer->read(frame.picture).value(); });
        times.same = milliseconds([&] { recognizer->read(again).value(); });
        times.rowChanged = milliseconds([&] { recognizer->read(changed).value(); });
        recognizer->read(frame.picture).value();
        times.scrolledBy = milliseconds([&] { recognizer->read(moved).value(); });
        all.times.add(times);
        all.score.add(scoreFrame(frame, text.records, details));
    }
    return all;
}

Measured measureTesseract(const FrameSet& set) {
    Measured all;
    const auto recognizer = makeFullFrameTesseract();
    for (const KnownFrame& frame : set.frames) {
        ReadText text;
        const double time = milliseconds([&] { text = recognizer->read(frame.picture).value(); });
        // It remembers nothing, so every frame costs it the same.
        all.times.add({time, time, time, time});
        all.score.add(scoreFrame(frame, text.records, Details::kNone));
    }
    return all;
}

void printScore(const char* who, const Score& s) {
    auto share = [](int part, int whole) { return whole ? double(part) / whole : 1.0; };
    std::printf(
        "  %-10s lines %d: exact %.3f, similar %.3f | amounts %d: exact %.3f, wrong %d | "
        "pay labels %d of %d | junk %d, merged %d\n",
        who, s.lines, share(s.exact, s.lines), share(s.similar, s.lines), s.amounts,
        share(s.exactAmounts, s.amounts), s.wrongAmounts, s.exactPayLabels, s.payLabels, s.junk,
        s.merged);
}

void printTimes(const char* who, const Times& t, double frames) {
    std::printf(
        "  %-10s ms a frame: cold %.1f, same again %.2f, one row changed %.2f, "
        "scrolled %.1f\n",
        who, t.cold / frames, t.same / frames, t.rowChanged / frames, t.scrolledBy / frames);
}

void measure(const FrameSet& set, const Options& options) {
    if (set.frames.empty()) return;
    const auto frames = static_cast<double>(set.frames.size());
    std::printf("%s, %zu frames\n", set.name.c_str(), set.frames.size());
    const Measured own = measureOwn(set, options.details);
    printScore("own", own.score);
    if (!options.ownOnly) {
        const Measured other = measureTesseract(set);
        printScore("PSM 11", other.score);
        printTimes("own", own.times, frames);
        printTimes("PSM 11", other.times, frames);
        std::printf(
            "  times faster: cold %.1f, same again %.0f, one row changed %.0f, "
            "scrolled %.0f\n",
            other.times.cold / own.times.cold, other.times.same / own.times.same,
            other.times.rowChanged / own.times.rowChanged,
            other.times.scrolledBy / own.times.scrolledBy);
    } else {
        printTimes("own", own.times, frames);
    }
    std::fflush(stdout);
}

// The process's peak of resident memory, which holds the model and all scratch memory; taken before
// Tesseract runs in the same process.
double peakMegabytes() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.starts_with("VmHWM:")) return std::stod(line.substr(6)) / 1024;
    }
    return 0;
}

void measureMemory() {
    const FrameSet set = drawScreens(4, 99);
    const double before = peakMegabytes();
    const auto recognizer = *makeTextRecognizer();
    for (const KnownFrame& frame : set.frames) recognizer->read(frame.picture).value();
    std::printf("memory of the reader: %.1f MB more at the peak than before it was made\n\n",
                peakMegabytes() - before);
}

int run(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--details"))
            options.details = Details::kPrint;
        else if (!std::strcmp(argv[i], "--own"))
            options.ownOnly = true;
        else if (!std::strcmp(argv[i], "--frames") && i + 1 < argc)
            options.frames = std::atoi(argv[++i]);
        else {
            std::fprintf(stderr, "usage: text_table [--details] [--own] [--frames N]\n");
            return 2;
        }
    }
    measureMemory();
    if (const auto folder = environment("TANDREL_SCREENS")) {
        measure(loadScreenshots(*folder), options);
    } else {
        std::printf("screenshots: SKIPPED, since TANDREL_SCREENS names no folder\n");
    }
    measure(drawScreens(options.frames, 1), options);
    measure(drawAmounts(options.frames / 3, 2), options);
    return 0;
}

}  // namespace
}  // namespace tandrel

int main(int argc, char** argv) { return tandrel::run(argc, argv); }
