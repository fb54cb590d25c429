#include <benchmark/benchmark.h>

#include "image/frames/frames.h"
#include "screen/content_rect.h"
#include "screen/screen.h"

// From a frame that a device delivers to the image that a client gets. `copies` counts full copies
// of the frame made on the way, for each image.
namespace tandrel::bench {
namespace {

// One phone whose frames the benchmark sends by hand.
class OnePhone final : public CaptureDevices {
 public:
    void allowScreenCaptureDevices() override {}
    std::vector<CaptureDeviceInfo> devices() override { return {info}; }
    void setOnDevicesChanged(std::function<void()>) override {}
    void requestAccess(std::function<void(bool)> answer) override { answer(true); }
    Result<std::unique_ptr<CaptureSession>> open(const CaptureDeviceInfo&, FrameSink to) override {
        sink = std::move(to);
        return std::make_unique<CaptureSession>();
    }

    const CaptureDeviceInfo info{"A1", "iPhone", "iOS Device", true};
    FrameSink sink;
};

void frameToImage(benchmark::State& state, const SnapshotOptions& options) {
    OnePhone phone;
    const auto screen = *Screen::open(phone, phone.info, systemClock());
    const std::uint64_t copiesBefore = PixelBuffer::copiesMade();
    std::size_t next = 0;
    std::size_t size = 0;
    for (auto _ : state) {
        phone.sink(frame(next++ % kFrameNames.size()));
        size += screen->snapshot(options)->size();
    }
    const auto images = static_cast<double>(state.iterations());
    state.counters["copies"] = double(PixelBuffer::copiesMade() - copiesBefore) / images;
    state.counters["bytes"] = static_cast<double>(size) / images;
}

void frameToScreen(benchmark::State& state) {
    OnePhone phone;
    const auto screen = *Screen::open(phone, phone.info, systemClock());
    std::size_t next = 0;
    for (auto _ : state) phone.sink(frame(next++ % kFrameNames.size()));
}

// A phone in the middle of a black window of 1600 x 2800.
PixelBuffer window() {
    return PixelBuffer::make(1600, 2800, [](std::uint8_t* pixels, int rowBytes) {
        for (int y = 0; y < kFrameHeight; ++y) {
            std::copy_n(frame(0).row(y), 4 * kFrameWidth,
                        pixels + (y + 90) * static_cast<std::ptrdiff_t>(rowBytes) + 4 * 197);
        }
    });
}

void detectContentInAWindow(benchmark::State& state) {
    const PixelBuffer picture = window();
    for (auto _ : state) {
        benchmark::DoNotOptimize(withPixels(
            picture, [](const Pixels& pixels) { return detectContent(pixels, {}, {}); }));
    }
}

BENCHMARK_CAPTURE(frameToImage, png, {})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(frameToImage, png_900, {.maxEdge = 900})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(frameToImage, jpeg_900, {.format = ImageFormat::jpeg, .maxEdge = 900})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(frameToScreen)->Unit(benchmark::kMicrosecond);
BENCHMARK(detectContentInAWindow)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tandrel::bench
