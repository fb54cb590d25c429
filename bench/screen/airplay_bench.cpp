#include <benchmark/benchmark.h>

#include "http/client.h"
#include "image/frames/frames.h"
#include "screen/airplay_http.h"
#include "screen/airplay_server.h"
#include "screen/fake_windows.h"

// The mirrored picture over HTTP, from the request to the last byte.
namespace tandrel::bench {
namespace {

class NoReader final : public TextRecognizer {
 public:
    Result<ReadText> read(const PixelBuffer&) override { return ReadText{}; }
};

void frameOverHttp(benchmark::State& state, const char* target) {
    FakeWindows windows;
    windows.show(FakeWindows::receiver());
    windows.drawAtOpen(frame(0));
    NoReader reader;
    AirPlayServer server({.windows = windows,
                          .receiver = nullptr,
                          .recognizer = reader,
                          .clock = systemClock(),
                          .mayRecord = [] { return true; },
                          .app = "bench",
                          .version = "0"},
                         std::nullopt);
    const auto http =
        serveHTTP(0, [&](const HTTPRequest& request) { return server.handle(request); });
    if (!http) return state.SkipWithError(http.error().message.c_str());
    const LoopbackUrl url = LoopbackUrl::ofPort((*http)->port());
    const std::uint64_t copiesBefore = PixelBuffer::copiesMade();
    std::size_t bytes = 0;
    for (auto _ : state) {
        const auto reply = httpGet(url, target);
        if (!reply || reply->status != 200) return state.SkipWithError("no picture");
        bytes = reply->body.size();
    }
    state.counters["bytes"] = static_cast<double>(bytes);
    state.counters["copies"] = static_cast<double>(PixelBuffer::copiesMade() - copiesBefore);
}

BENCHMARK_CAPTURE(frameOverHttp, png_900, "/frame.png?maxEdge=900")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(frameOverHttp, png_full, "/frame.png")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tandrel::bench
