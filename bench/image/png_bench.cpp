#include <benchmark/benchmark.h>
#include <png.h>

#include "base/bytes.h"
#include "image/frames/frames.h"
#include "image/jpeg_writer.h"
#include "image/png_writer.h"
#include "timing.h"

// PNG and JPEG of the three frames. `faster` and `size` compare with libpng at level 6 in this run;
// the last line is the mean over the frames.
namespace tandrel::bench {
namespace {

constexpr int kRuns = 7;

Bytes libpngLevel6(const PixelBuffer& frame) {
    Bytes out;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &out,
        [](png_structp writer, png_bytep data, std::size_t size) {
            auto* bytes = static_cast<Bytes*>(png_get_io_ptr(writer));
            bytes->insert(bytes->end(), data, data + size);
        },
        nullptr);
    png_set_compression_level(png, 6);
    png_set_IHDR(png, info, static_cast<png_uint_32>(frame.width()),
                 static_cast<png_uint_32>(frame.height()), 8, PNG_COLOR_TYPE_RGB, 0, 0, 0);
    png_write_info(png, info);
    png_set_bgr(png);
    png_set_filler(png, 0, PNG_FILLER_AFTER);
    for (int y = 0; y < frame.height(); ++y) png_write_row(png, frame.row(y));
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return out;
}

Bytes ours(const PixelBuffer& frame) { return *withPixels(frame, encodePng); }

struct Comparison {
    double faster;
    double size;
};

Comparison compared(const PixelBuffer& frame) {
    std::size_t size = 0;
    std::size_t referenceSize = 0;
    const MedianTimes times = medianTimes(
        kRuns, [&] { size = ours(frame).size(); },
        [&] { referenceSize = libpngLevel6(frame).size(); });
    return {times.second / times.first, double(size) / double(referenceSize)};
}

void png(benchmark::State& state, std::size_t index) {
    for (auto _ : state) benchmark::DoNotOptimize(ours(frame(index)));
    const Comparison result = compared(frame(index));
    state.counters["faster"] = result.faster;
    state.counters["size"] = result.size;
}

void pngMean(benchmark::State& state) {
    for (auto _ : state) {
        for (std::size_t i = 0; i < kFrameNames.size(); ++i) {
            benchmark::DoNotOptimize(ours(frame(i)));
        }
    }
    Comparison sum{};
    for (std::size_t i = 0; i < kFrameNames.size(); ++i) {
        const Comparison one = compared(frame(i));
        sum = {sum.faster + one.faster, sum.size + one.size};
    }
    state.counters["faster"] = sum.faster / kFrameNames.size();
    state.counters["size"] = sum.size / kFrameNames.size();
}

void jpeg(benchmark::State& state, std::size_t index) {
    std::size_t size = 0;
    for (auto _ : state) {
        size = withPixels(frame(index), [](const Pixels& p) { return encodeJpeg(p, 80); })->size();
    }
    state.counters["bytes"] = static_cast<double>(size);
}

const auto* const kMean =
    benchmark::RegisterBenchmark("png/mean of three", pngMean)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(png, text, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(png, photo, 1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(png, dark, 2)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(jpeg, text, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(jpeg, photo, 1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tandrel::bench
