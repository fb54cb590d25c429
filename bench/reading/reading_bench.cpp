// What reading one drawn frame costs, ours beside Tesseract on the full frame, and where it goes.
// `make bench-text` prints the same over many frames together with how right the reading is.
#include <algorithm>

#include <benchmark/benchmark.h>

#include "platform/linux/linux_text_recognizer.h"
#include "reading/line_finder.h"
#include "reading/picture_hash.h"
#include "reading/strip.h"
#include "reading/trained_strip_reader.h"
#include "text/full_frame_tesseract.h"
#include "text/known_frame.h"

namespace tandrel {
namespace {

// A page at three pixels a point.
const PixelBuffer& page() {
    static const PixelBuffer picture = [] {
        const FrameSet set = drawScreens(20, DrawnUse::kTuning);
        return std::ranges::max_element(set.frames, {},
                                        [](const KnownFrame& frame) {
                                            return std::pair(frame.picture.width(),
                                                             frame.lines.size());
                                        })
            ->picture;
    }();
    return picture;
}

std::unique_ptr<TextRecognizer> loadedRecognizer() {
    auto recognizer = *makeTextRecognizer();
    (void)recognizer->read(PixelBuffer::make(300, 60, [](std::uint8_t* pixels, int) {
        for (int i = 0; i < 400; ++i) pixels[300 * 4 * 20 + i] = 255;
    }));
    return recognizer;
}

void readsTwoInTurn(benchmark::State& state, const PixelBuffer& first, const PixelBuffer& second) {
    for (auto _ : state) {
        state.PauseTiming();
        const auto recognizer = loadedRecognizer();
        (void)recognizer->read(first);
        state.ResumeTiming();
        benchmark::DoNotOptimize(recognizer->read(second));
    }
}

void BM_Cold(benchmark::State& state) {
    readsTwoInTurn(state, PixelBuffer::make(2, 2, [](std::uint8_t*, int) {}), page());
}
void BM_SameAgain(benchmark::State& state) { readsTwoInTurn(state, page(), page().copy()); }
void BM_OneRowChanged(benchmark::State& state) {
    readsTwoInTurn(state, page(), withOneRowChanged(page()));
}
void BM_Scrolled(benchmark::State& state) { readsTwoInTurn(state, page(), scrolled(page())); }

void BM_FullFrameTesseract(benchmark::State& state) {
    const auto recognizer = makeFullFrameTesseract();
    for (auto _ : state) benchmark::DoNotOptimize(recognizer->read(page()));
}

void BM_PartRowSums(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(rowSumsOf(page()));
}
void BM_PartGray(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(GrayFrame::from(page()));
}
void BM_PartLines(benchmark::State& state) {
    const GrayFrame gray = GrayFrame::from(page());
    for (auto _ : state) benchmark::DoNotOptimize(findLines(gray));
}
void BM_PartLinesOfOneRow(benchmark::State& state) {
    const GrayFrame gray = GrayFrame::from(page());
    LineFinder finder(gray.width(), gray.height());
    finder.find(gray, ChangedRows::all(gray.height()));
    std::vector<bool> changed(static_cast<std::size_t>(gray.height()));
    for (int y = 1000; y < 1130; ++y) changed[static_cast<std::size_t>(y)] = true;
    for (auto _ : state) benchmark::DoNotOptimize(finder.find(gray, ChangedRows(changed)));
}

// A line by itself, whose letters' weights serve no other line.
void BM_PartOneStrip(benchmark::State& state) {
    const GrayFrame gray = GrayFrame::from(page());
    const auto lines = findLines(gray);
    const auto longest = std::ranges::max_element(lines, {}, [](const TextLine& line) {
        return line.ink.box.width() / line.ink.box.height();
    });
    TrainedStripReader reader(trainedDataFolder(), "eng", nullptr);
    const Strip strip = makeStrip(gray, longest->ink, 0.15);
    for (auto _ : state) benchmark::DoNotOptimize(reader.read(std::span(&strip, 1)));
    state.counters["columns"] = strip.columns;
}

constexpr auto kUnit = benchmark::kMillisecond;
BENCHMARK(BM_FullFrameTesseract)->Unit(kUnit)->Iterations(5)->MeasureProcessCPUTime();
BENCHMARK(BM_Cold)->Unit(kUnit)->Iterations(20)->MeasureProcessCPUTime();
BENCHMARK(BM_SameAgain)->Unit(kUnit)->Iterations(20)->MeasureProcessCPUTime();
BENCHMARK(BM_OneRowChanged)->Unit(kUnit)->Iterations(20)->MeasureProcessCPUTime();
BENCHMARK(BM_Scrolled)->Unit(kUnit)->Iterations(20)->MeasureProcessCPUTime();
BENCHMARK(BM_PartRowSums)->Unit(kUnit);
BENCHMARK(BM_PartGray)->Unit(kUnit);
BENCHMARK(BM_PartLines)->Unit(kUnit);
BENCHMARK(BM_PartLinesOfOneRow)->Unit(kUnit);
BENCHMARK(BM_PartOneStrip)->Unit(kUnit);

}  // namespace
}  // namespace tandrel
