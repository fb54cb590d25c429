#include <cmath>

#include <benchmark/benchmark.h>

extern "C" {
#include <libswscale/swscale.h>
}

#include "image/area_scaler.h"
#include "image/frames/frames.h"
#include "image/window_thumbnail.h"
#include "timing.h"

// How close the scaler comes to the exact area average (decibels, the worst of the three frames)
// and how its time compares with swscale's area filter in this run.
namespace tandrel::bench {
namespace {

constexpr int kRuns = 9;

// Means of the area that each output pixel covers, four channels, in real numbers.
std::vector<double> exactAverage(const PixelBuffer& from, int width, int height) {
    std::vector<double> result;
    const double stepX = double(from.width()) / width;
    const double stepY = double(from.height()) / height;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            double sum[4] = {};
            for (int v = int(y * stepY);
                 v < std::min(std::ceil((y + 1) * stepY), from.height() + .0); ++v) {
                const double tall =
                    std::min((y + 1) * stepY, v + 1.0) - std::max(y * stepY, v + .0);
                for (int u = int(x * stepX);
                     u < std::min(std::ceil((x + 1) * stepX), from.width() + .0); ++u) {
                    const double part =
                        tall * (std::min((x + 1) * stepX, u + 1.0) - std::max(x * stepX, u + .0));
                    for (int c = 0; c < 4; ++c) sum[c] += part * from.row(v)[4 * u + c];
                }
            }
            for (const double channel : sum) result.push_back(channel / (stepX * stepY));
        }
    }
    return result;
}

double decibels(double squaredError, double count) {
    return 10 * std::log10(255.0 * 255.0 * count / std::max(squaredError, 1e-9));
}

double colourQuality(const PixelBuffer& from, const PixelBuffer& to) {
    const std::vector<double> exact = exactAverage(from, to.width(), to.height());
    double error = 0;
    for (std::size_t i = 0; i < exact.size(); ++i) {
        if (i % 4 == 3) continue;
        error += std::pow(std::round(exact[i]) - to.pixels()[i], 2);
    }
    return decibels(error, double(exact.size()) * 3 / 4);
}

double greyQuality(const PixelBuffer& from, const Bytes& to, int width, int height) {
    const std::vector<double> exact = exactAverage(from, width, height);
    double error = 0;
    for (std::size_t i = 0; i < to.size(); ++i) {
        const double* p = exact.data() + 4 * i;
        error += std::pow(std::round(0.114 * p[0] + 0.587 * p[1] + 0.299 * p[2]) - to[i], 2);
    }
    return decibels(error, double(to.size()));
}

PixelBuffer swscaleArea(const PixelBuffer& from, int width, int height) {
    SwsContext* context =
        sws_getContext(from.width(), from.height(), AV_PIX_FMT_BGRA, width, height, AV_PIX_FMT_BGRA,
                       SWS_AREA, nullptr, nullptr, nullptr);
    PixelBuffer result = PixelBuffer::make(width, height, [&](std::uint8_t* pixels, int rowBytes) {
        const std::uint8_t* in[] = {from.pixels()};
        const int inRow[] = {from.rowBytes()};
        std::uint8_t* out[] = {pixels};
        const int outRow[] = {rowBytes};
        sws_scale(context, in, inRow, 0, from.height(), out, outRow);
    });
    sws_freeContext(context);
    return result;
}

PixelBuffer ours(const PixelBuffer& from, int width, int height) {
    return withPixels(from, [&](const Pixels& pixels) { return scaled(pixels, width, height); });
}

void scaledTo900(benchmark::State& state) {
    constexpr int kWidth = 414;
    constexpr int kHeight = 900;
    for (auto _ : state) benchmark::DoNotOptimize(ours(frame(0), kWidth, kHeight));
    double worst = HUGE_VAL;
    double worstOfSwscale = HUGE_VAL;
    for (std::size_t i = 0; i < kFrameNames.size(); ++i) {
        worst = std::min(worst, colourQuality(frame(i), ours(frame(i), kWidth, kHeight)));
        worstOfSwscale = std::min(worstOfSwscale,
                                  colourQuality(frame(i), swscaleArea(frame(i), kWidth, kHeight)));
    }
    const MedianTimes times = medianTimes(
        kRuns, [] { ours(frame(0), kWidth, kHeight); },
        [] { swscaleArea(frame(0), kWidth, kHeight); });
    state.counters["dB"] = worst;
    state.counters["swscale_dB"] = worstOfSwscale;
    state.counters["swscale_ms"] = times.second;
    state.counters["faster"] = times.second / times.first;
}

void greyThumbnailOf(benchmark::State& state, int width, int height) {
    const auto thumbnail = [&](std::size_t i) {
        return withPixels(frame(i),
                          [&](const Pixels& p) { return greyThumbnail(p, width, height); });
    };
    for (auto _ : state) benchmark::DoNotOptimize(thumbnail(0));
    double worst = HUGE_VAL;
    for (std::size_t i = 0; i < kFrameNames.size(); ++i) {
        worst = std::min(worst, greyQuality(frame(i), thumbnail(i), width, height));
    }
    state.counters["dB"] = worst;
}

void windowThumbnailOfAFrame(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(withPixels(frame(0), windowThumbnail));
}

BENCHMARK(scaledTo900)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(greyThumbnailOf, pointer_90x195, 90, 195)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(greyThumbnailOf, brightness_24x52, 24, 52)->Unit(benchmark::kMillisecond);
BENCHMARK(windowThumbnailOfAFrame)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tandrel::bench
