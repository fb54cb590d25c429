#include <algorithm>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include "base/file.h"
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

// How long after it was drawn each frame came.
class Delays {
 public:
    void add(Duration delay) {
        std::lock_guard lock(mutex_);
        milliseconds_.push_back(toSeconds(delay) * 1000);
    }
    void report(benchmark::State& state, double seconds, double processorSeconds) {
        std::lock_guard lock(mutex_);
        if (milliseconds_.empty()) return state.SkipWithError("no frame came");
        std::ranges::sort(milliseconds_);
        const auto frames = static_cast<double>(milliseconds_.size());
        const auto at = [&](double share) {
            return milliseconds_[static_cast<std::size_t>(share * (frames - 1))];
        };
        state.counters["frames_s"] = frames / seconds;
        state.counters["latency_ms"] = at(0.5);
        state.counters["p95_ms"] = at(0.95);
        state.counters["cpu_%"] = 100 * processorSeconds / seconds;
        state.counters["cpu_ms"] = 1000 * processorSeconds / frames;
    }

 private:
    std::mutex mutex_;
    std::vector<double> milliseconds_;
};

// When each frame was drawn, by its number.
class DrawTimes {
 public:
    void drawn(std::uint32_t number) {
        std::lock_guard lock(mutex_);
        drawn_[number] = systemClock().now();
    }
    std::optional<Duration> since(std::uint32_t number) {
        std::lock_guard lock(mutex_);
        const auto at = drawn_.find(number);
        if (at == drawn_.end()) return std::nullopt;
        const Duration delay = systemClock().now() - at->second;
        drawn_.erase(at);
        return delay;
    }

 private:
    std::mutex mutex_;
    std::map<std::uint32_t, TimePoint> drawn_;
};

void windowFrames(benchmark::State& state, XWindowStream::Transfer transfer) {
    const auto desktop = XDesktop::open(XDesktop::Manager::none);
    if (!desktop) return state.SkipWithError("Xvfb is not installed");
    const auto width = static_cast<std::uint16_t>(state.range(0));
    const auto height = static_cast<std::uint16_t>(state.range(1));
    XTestWindow window(*desktop, "phone", {0, 0, width, height});
    DrawTimes times;
    Delays delays;
    // A frame's number is its colour.
    WindowEvents events{.frame =
                            [&](const PixelBuffer& frame) {
                                const std::uint8_t* p = frame.row(frame.height() - 1);
                                const auto delay = times.since(std::uint32_t{p[2]} << 16 |
                                                               std::uint32_t{p[1]} << 8 | p[0]);
                                if (delay) delays.add(*delay);
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
        delays.report(state, toSeconds(systemClock().now() - start), ownSeconds() - processor);
    }
}

// The time that the program wrote into the frame's first pixels.
Duration sinceWritten(const PixelBuffer& frame) {
    std::uint64_t time = 0;
    for (int bit = 0; bit < 64; ++bit) {
        const bool isSet = frame.row(0)[std::ptrdiff_t{4} * bit + 1] > 128;
        if (isSet) time |= std::uint64_t{1} << bit;
    }
    return systemClock().now().time_since_epoch() - std::chrono::nanoseconds(time);
}

void pipeFrames(benchmark::State& state) {
    const TemporaryFolder folder;
    const auto script = folder.path() / "receiver";
    const std::string words = "#!/bin/sh\nexec " TANDREL_BIN_DIR "/write_frames " +
                              std::to_string(state.range(0)) + " " +
                              std::to_string(state.range(1)) + " 30\n";
    if (!replaceFile(script, words)) return state.SkipWithError("cannot write the receiver");
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    PipeAirPlayReceiver receiver(
        {.program = script.string(), .name = "Desk", .isConnected = [](pid_t) { return true; }});
    receiver.start();
    while (receiver.all()->empty()) std::this_thread::yield();
    Delays delays;
    WindowEvents events{.frame = [&](const PixelBuffer& frame) { delays.add(sinceWritten(frame)); },
                        .hidden = [](const std::string&) {},
                        .ended = [](const std::string&) {}};
    for (auto _ : state) {
        const auto stream = receiver.open(receiver.all()->front().id, events);
        if (!stream) return state.SkipWithError(stream.error().message.c_str());
        const double processor = ownSeconds();
        const TimePoint start = systemClock().now();
        systemClock().sleepFor(kLength);
        delays.report(state, toSeconds(systemClock().now() - start), ownSeconds() - processor);
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
BENCHMARK(pipeFrames)
    ->Args({1206, 2622})
    ->Args({996, 2160})
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kSecond);

}  // namespace
}  // namespace tandrel
