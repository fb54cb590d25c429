// Four phones whose screens change 60 times a second, clients that look, take pictures and tap all
// the while, and the resident memory watched: it must not grow.
#include <atomic>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <thread>

#include <fmt/format.h>

#include "app/wiring.h"
#include "base/log.h"
#include "http/client.h"
#include "memory_trend.h"
#include "platform/linux/linux_main_loop.h"
#include "platform/linux/process_limits.h"
#include "platform/virtual/virtual_platform.h"
#include "predrawn_capture.h"

namespace tandrel {
namespace {

constexpr int kPhones = 4;
constexpr double kFramesPerSecond = 60;
constexpr double kWarmUpShare = 0.2;  // caches and pools fill at first

struct Counts {
    std::atomic<int> looks{0};
    std::atomic<int> pictures{0};
    std::atomic<int> taps{0};
    std::atomic<int> failures{0};
};

std::string fourPhones() {
    std::string paths;
    for (int i = 0; i < kPhones; ++i) {
        paths += std::string(i > 0 ? ":" : "") + TANDREL_SOURCE_DIR
                 "/share/tandrel/scenarios/default.json";
    }
    return paths;
}

// The frames of two pages of each virtual phone, drawn once.
std::unique_ptr<CaptureDevices> predrawn(VirtualPlatform& platform) {
    std::vector<PredrawnCapture::Phone> phones;
    for (const auto& phone : platform.phones()) {
        PredrawnCapture::Phone drawn{{phone->traits().id, phone->traits().name, "iOS Device", true},
                                     {}};
        for (const char* page : {"settings", "news"}) {
            phone->showPage(page);
            drawn.frames.push_back(phone->frame());
        }
        phones.push_back(std::move(drawn));
    }
    return std::make_unique<PredrawnCapture>(std::move(phones), kFramesPerSecond);
}

void useOnePhone(const LoopbackUrl& server, const std::string& device, Counts& counts,
                 const std::stop_token& stop) {
    const ClientOptions options{.timeout = std::chrono::seconds(120), .stop = stop};
    const auto note = [&](const Result<ClientResponse>& reply, std::atomic<int>& count) {
        if (stop.stop_requested()) return;
        ++(reply && reply->status == 200 ? count : counts.failures);
    };
    while (!stop.stop_requested()) {
        note(httpGet(server, "/look?maxEdge=900&device=" + device, options), counts.looks);
        note(httpGet(server, "/screenshot?device=" + device, options), counts.pictures);
        note(httpPost(server, "/tap",
                      {{"x", 0.5}, {"y", 0.9}, {"fraction", true}, {"device", device}}, options),
             counts.taps);
    }
}

void pairAll(const LoopbackUrl& server, VirtualPlatform& platform) {
    for (const auto& phone : platform.phones()) {
        const Json pair = {{"device", phone->traits().id}, {"host", phone->traits().host.text()}};
        while (httpPost(server, "/pair", pair)->status != 200) std::this_thread::yield();
    }
}

int report(const std::vector<MemoryTrend::Sample>& samples, const Counts& counts) {
    const MemoryTrend trend = MemoryTrend::of(samples);
    fmt::print("{} looks, {} pictures, {} taps, {} failures, {} copies of a full frame\n",
               counts.looks.load(), counts.pictures.load(), counts.taps.load(),
               counts.failures.load(), PixelBuffer::copiesMade());
    fmt::print("resident memory {:.1f} MB, slope {:+.3f} MB/min (standard error {:.3f}): {}\n",
               trend.mean, trend.slope, trend.standardError,
               trend.isFlat() ? "flat within noise" : "GROWS");
    return trend.isFlat() && counts.failures == 0 ? 0 : 1;
}

int soak(double secondsLong) {
    shareHeaps();
    char folder[] = "/tmp/tandrel-soak-XXXXXX";
    ::setenv("HOME", ::mkdtemp(folder), 1);
    ::setenv("TANDREL_VIRTUAL_PHONE", fourPhones().c_str(), 1);
    ::setenv("TANDREL_ENGINE_PORT", "0", 1);
    ::setenv("TANDREL_AIRPLAY_PORT", "0", 1);
    const AppInfo info = AppInfo::load(TANDREL_SOURCE_DIR);
    auto backends = Backends::open(info, systemClock());
    if (!backends) {
        fmt::print(stderr, "{}\n", backends.error().message);
        return 1;
    }
    backends->ownCapture = predrawn(*backends->virtualPhones);
    backends->capture = backends->ownCapture.get();
    LinuxMainLoop loop;
    NobodyAsker asker(systemClock());
    Wiring wiring(std::move(*backends), info, loop, asker, systemClock());
    wiring.engine().start();
    const LoopbackUrl server = *LoopbackUrl::parse(wiring.engine().ownURL());
    pairAll(server, *wiring.backends().virtualPhones);

    Counts counts;
    std::vector<MemoryTrend::Sample> samples;
    {
        std::vector<std::jthread> clients;
        for (const auto& phone : wiring.backends().virtualPhones->phones()) {
            clients.emplace_back([&, id = phone->traits().id](const std::stop_token& stop) {
                useOnePhone(server, id, counts, stop);
            });
        }
        systemClock().sleepFor(seconds(secondsLong * kWarmUpShare));
        const double step = secondsLong * (1 - kWarmUpShare) / 60;
        for (int i = 0; i <= 60; ++i) {
            samples.push_back({i * step / 60, residentMegabytes()});
            systemClock().sleepFor(seconds(step));
        }
    }
    wiring.engine().stop();
    std::filesystem::remove_all(folder);
    return report(samples, counts);
}

}  // namespace
}  // namespace tandrel

int main(int argc, char** argv) {
    double secondsLong = 600;
    if (argc == 3 && std::strcmp(argv[1], "--seconds") == 0) secondsLong = std::atof(argv[2]);
    if (argc != 1 && argc != 3) {
        fmt::print(stderr, "usage: soak [--seconds N]\n");
        return 2;
    }
    return tandrel::soak(secondsLong);
}
