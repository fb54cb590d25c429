#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>

#include "base/environment.h"
#include "text/full_frame_tesseract.h"
#include "text/measured.h"

// text_table [--details] [--own] [--frames N] [--only WORD] [--phone FOLDER]
// Prints how right and how fast frames are read, ours beside Tesseract on the full frame in the
// same run: on the real screenshots in the folder TANDREL_SCREENS, on frames drawn here and on what
// the virtual phone with the scenarios in FOLDER shows; then what is to be reached and what was.
// --details lists what was misread, --own leaves the comparison out, --only measures the sets alone
// whose names hold WORD.
namespace tandrel {
namespace {

struct Options {
    Details details = Details::kNone;
    bool ownOnly = false;
    int frames = 42;
    std::string only;
    std::string phoneFolder = "share/tandrel/scenarios";
};

std::optional<Options> parseOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const bool hasValue = i + 1 < argc;
        if (!std::strcmp(argv[i], "--details"))
            options.details = Details::kPrint;
        else if (!std::strcmp(argv[i], "--own"))
            options.ownOnly = true;
        else if (!std::strcmp(argv[i], "--frames") && hasValue)
            options.frames = std::atoi(argv[++i]);
        else if (!std::strcmp(argv[i], "--only") && hasValue)
            options.only = argv[++i];
        else if (!std::strcmp(argv[i], "--phone") && hasValue)
            options.phoneFolder = argv[++i];
        else
            return std::nullopt;
    }
    return options;
}

// Both readers on the frames of one set; empty if it was not asked for.
struct Compared {
    Measured own;
    Measured other;
};

template <typename Make>
Compared measure(const char* name, const Options& options, Details details, Make&& make) {
    if (!std::string_view(name).contains(options.only)) return {};
    const FrameSet set = make();
    if (set.frames.empty()) return {};
    std::printf("%s, %zu frames\n", set.name.c_str(), set.frames.size());
    Compared compared{measureOwn(set, details), {}};
    printScore("own", compared.own);
    if (!options.ownOnly) {
        compared.other = measureWith(*makeFullFrameTesseract(), set);
        printScore("PSM 11", compared.other);
        printTimes("PSM 11", compared.other);
    }
    printTimes("own", compared.own);
    if (!options.ownOnly) printRatios(compared.own, compared.other);
    std::printf("\n");
    std::fflush(stdout);
    return compared;
}

int run(int argc, char** argv) {
    const auto parsed = parseOptions(argc, argv);
    if (!parsed) {
        std::fprintf(stderr,
                     "usage: text_table [--details] [--own] [--frames N] [--only WORD] "
                     "[--phone FOLDER]\n");
        return 2;
    }
    const Options& options = *parsed;
    const Details details = options.details;
    const double megabytes = measureMemory();
    std::printf("memory of the reader: %.1f MB more at the peak than before it was made\n\n",
                megabytes);
    const auto folder = environment("TANDREL_SCREENS");
    if (!folder) {
        std::printf("screenshots: SKIPPED, since TANDREL_SCREENS names no folder\n\n");
    }
    const auto real = measure("screenshots", options, details,
                              [&] { return folder ? loadScreenshots(*folder) : FrameSet{}; });
    auto drawn = [&](const char* name, auto* draw, int frames, DrawnUse use) {
        // What is held back is to judge by, not to look at.
        const Details shown = use == DrawnUse::kTuning ? details : Details::kNone;
        return measure(name, options, shown, [&] { return draw(frames, use); });
    };
    drawn("drawn screens", drawScreens, options.frames, DrawnUse::kTuning);
    const auto screens =
        drawn("held back screens", drawScreens, options.frames, DrawnUse::kHeldBack);
    drawn("amounts", drawAmounts, options.frames / 3, DrawnUse::kTuning);
    const auto amounts =
        drawn("held back amounts", drawAmounts, options.frames / 3, DrawnUse::kHeldBack);
    measure("virtual phone", options, details, [&] { return drawPhonePages(options.phoneFolder); });
    if (!options.only.empty()) return 0;
    const double longestSeconds = measureHardFrames();
    if (!options.ownOnly) {
        printGoals({.real = real.own,
                    .realOther = real.other,
                    .amounts = amounts.own,
                    .screens = screens.own,
                    .screensOther = screens.other,
                    .megabytes = megabytes,
                    .longestSeconds = longestSeconds});
    }
    return 0;
}

}  // namespace
}  // namespace tandrel

int main(int argc, char** argv) { return tandrel::run(argc, argv); }
