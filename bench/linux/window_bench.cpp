#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include "base/file.h"
#include "image/gdp_writer.h"
#include "platform/linux/pipe_airplay_receiver.h"
#include "platform/linux/x_desktop.h"
#include "platform/linux/x_window_stream.h"
#include "support/temporary_folder.h"

// Pictures of another program: of a real window on a display of its own, drawn at 60 frames a
// second, fetched through shared memory and, beside it, through the plain request; and of a program
// that writes frames into the receiver's pipe.
namespace tandrel {
namespace {

constexpr auto kLength = std::chrono::seconds(4);

double ownSeconds() {
    rusage used{};
    ::getrusage(RUSAGE_SELF, &used);
    return double(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
           double(used.ru_utime.tv_usec + used.ru_stime.tv_usec) / 1e6;
}

// When each frame was drawn and when its pixels had come, by the frame's number.
class Times {
 public:
    void drawn(std::uint32_t number) {
        std::lock_guard lock(mutex_);
        drawn_[number] = systemClock().now();
    }
    void came(std::uint32_t number) {
        std::lock_guard lock(mutex_);
        const auto at = drawn_.find(number);
        if (at == drawn_.end()) return;
        delays_.push_back(toSeconds(systemClock().now() - at->second) * 1000);
        drawn_.erase(at);
    }
    void report(benchmark::State& state, double seconds, double processorSeconds) {
        std::lock_guard lock(mutex_);
        std::ranges::sort(delays_);
        const auto at = [&](double share) {
            return delays_.empty() ? 0
                                   : delays_[static_cast<std::size_t>(
                                         share * static_cast<double>(delays_.size() - 1))];
        };
        state.counters["frames_s"] = double(delays_.size()) / seconds;
        state.counters["latency_ms"] = at(0.5);
        state.counters["p95_ms"] = at(0.95);
        state.counters["cpu_%"] = 100 * processorSeconds / seconds;
    }

 private:
    std::mutex mutex_;
    std::map<std::uint32_t, TimePoint> drawn_;
    std::vector<double> delays_;
};

void windowFrames(benchmark::State& state, XWindowStream::Transfer transfer) {
    const auto desktop = XDesktop::open(XDesktop::Manager::none);
    if (!desktop) return state.SkipWithError("Xvfb is not installed");
    const auto width = static_cast<std::uint16_t>(state.range(0));
    const auto height = static_cast<std::uint16_t>(state.range(1));
    XTestWindow window(*desktop, "phone", {0, 0, width, height});
    Times times;
    // A frame's number is its colour.
    WindowEvents events{
        .frame =
            [&](const PixelBuffer& frame) {
                const std::uint8_t* p = frame.row(frame.height() - 1);
                times.came(std::uint32_t{p[2]} << 16 | std::uint32_t{p[1]} << 8 | p[0]);
            },
        .hidden = [](const std::string&) {},
        .ended = [](const std::string&) {}};
    for (auto _ : state) {
        const auto stream = XWindowStream::open(window.id(), events, transfer);
        if (!stream) return state.SkipWithError(stream.error().message.c_str());
        const double processor = ownSeconds();
        const TimePoint start = systemClock().now();
        TimePoint next = start;
        for (std::uint32_t number = 1; next < start + kLength; ++number) {
            times.drawn(number);
            window.fill(number);
            next += std::chrono::nanoseconds(1'000'000'000 / 60);
            systemClock().sleepUntil(next);
        }
        times.report(state, toSeconds(systemClock().now() - start), ownSeconds() - processor);
    }
}

void pipeFrames(benchmark::State& state) {
    constexpr int kWidth = 1206;
    constexpr int kHeight = 2622;
    const TemporaryFolder folder;
    const auto script = folder.path() / "receiver";
    const std::string caps = toText(gdp::caps(kWidth, kHeight));
    const bool isWritten =
        replaceFile(folder.path() / "caps", caps) &&
        replaceFile(folder.path() / "frame", toText(gdp::frame(kWidth, kHeight))) &&
        replaceFile(script,
                    "#!/bin/sh\ncd " + folder.path().string() +
                        "\ncat caps frame >&3\nwhile sleep 0.031; do cat frame >&3; done\n");
    if (!isWritten) return state.SkipWithError("cannot write the receiver");
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    PipeAirPlayReceiver receiver(
        {.program = script.string(), .name = "Desk", .isConnected = [](pid_t) { return true; }});
    receiver.start();
    while (receiver.all()->empty()) std::this_thread::yield();
    std::atomic<int> frames = 0;
    WindowEvents events{.frame = [&](const PixelBuffer&) { ++frames; },
                        .hidden = [](const std::string&) {},
                        .ended = [](const std::string&) {}};
    for (auto _ : state) {
        const auto stream = receiver.open(receiver.all()->front().id, events);
        const double processor = ownSeconds();
        const TimePoint start = systemClock().now();
        systemClock().sleepFor(kLength);
        const double seconds = toSeconds(systemClock().now() - start);
        state.counters["frames_s"] = frames / seconds;
        state.counters["cpu_%"] = 100 * (ownSeconds() - processor) / seconds;
    }
}

BENCHMARK_CAPTURE(windowFrames, shared, XWindowStream::Transfer::shared)
    ->Args({1206, 2622})
    ->Args({590, 1280})
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kSecond);
BENCHMARK_CAPTURE(windowFrames, plain, XWindowStream::Transfer::plain)
    ->Args({1206, 2622})
    ->Args({590, 1280})
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kSecond);
BENCHMARK(pipeFrames)->Iterations(1)->UseRealTime()->Unit(benchmark::kSecond);

}  // namespace
}  // namespace tandrel
