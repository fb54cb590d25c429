#include <algorithm>
#include <mutex>
#include <vector>

#include <benchmark/benchmark.h>

#include "hid/gatt_database.h"
#include "hid/hid_peripheral.h"
#include "hid/input.h"

namespace tandrel {
namespace {

// A Bluetooth system that accepts everything and notes when it did.
class CountingBluetooth final : public BluetoothPeripheral {
 public:
    BluetoothAuthorization authorization() const override {
        return BluetoothAuthorization::allowedAlways;
    }
    void addService(const GattService&) override {}
    void removeAllServices() override {}
    void startAdvertising(const std::string&, const std::vector<std::string>&) override {}
    void stopAdvertising() override {}
    bool isAdvertising() const override { return true; }
    Delivery updateValue(CharacteristicId, const Bytes&, const std::vector<Uuid>&) override {
        acceptedAt.push_back(systemClock().now());
        return Delivery::accepted;
    }

    std::vector<TimePoint> acceptedAt;  // touched on the peripheral's queue
};

// A peripheral to which one phone has subscribed.
class Bench {
 public:
    Bench() {
        hid.start();
        hid.state();
        queue_->sync([this] {
            for (const ReportID id : kReportIDs) delegate_->subscribed(phone, gatt::inputOf(id));
            bluetooth_->acceptedAt.clear();
        });
    }

    std::vector<TimePoint> takeAcceptedAt() {
        return queue_->sync([this] { return std::exchange(bluetooth_->acceptedAt, {}); });
    }

    const Uuid phone;
    HIDPeripheral hid{"PocketLink",
                      [this](BluetoothPeripheralDelegate& delegate, SerialQueue& queue) {
                          delegate_ = &delegate;
                          queue_ = &queue;
                          auto made = std::make_unique<CountingBluetooth>();
                          bluetooth_ = made.get();
                          return made;
                      },
                      systemClock()};

 private:
    BluetoothPeripheralDelegate* delegate_ = nullptr;
    SerialQueue* queue_ = nullptr;
    CountingBluetooth* bluetooth_ = nullptr;
};

// How evenly reports leave: 500 characters typed make 1,000 reports, each `step` after the one
// before it. The median of the gaps is to be within 1 ms of the step, their 99th percentile within
// 5 ms.
void pacing(benchmark::State& state) {
    constexpr std::size_t kCharacters = 500;
    constexpr double kMillisecondsPerSecond = 1000;
    Bench bench;
    Input input(bench.hid, bench.phone, systemClock());
    std::vector<double> gaps;  // milliseconds
    for (auto _ : state) {
        if (!input.type(std::string(kCharacters, 'a'))) state.SkipWithError("typing failed");
        const std::vector<TimePoint> moments = bench.takeAcceptedAt();
        for (std::size_t i = 1; i < moments.size(); ++i) {
            gaps.push_back(toSeconds(moments[i] - moments[i - 1]) * kMillisecondsPerSecond);
        }
    }
    if (gaps.size() + 1 != 2 * kCharacters) state.SkipWithError("reports are missing");
    std::ranges::sort(gaps);
    const double step = input.step() * kMillisecondsPerSecond;
    const double median = gaps[gaps.size() / 2];
    const double p99 = gaps[gaps.size() * 99 / 100];
    state.counters["reports"] = static_cast<double>(gaps.size() + 1);
    state.counters["step_ms"] = step;
    state.counters["gap_median_ms"] = median;
    state.counters["gap_p99_ms"] = p99;
    state.counters["gap_max_ms"] = gaps.back();
    const bool isEven = std::abs(median - step) <= 1 && std::abs(p99 - step) <= 5;
    state.SetLabel(isEven ? "within 1 ms and 5 ms of the step" : "NOT within 1 ms and 5 ms");
}
BENCHMARK(pacing)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

// One report from `send` until the system has accepted it, in bursts of a thousand.
void sendAndDrain(benchmark::State& state) {
    constexpr int kBurst = 1000;
    Bench bench;
    const Report report = absolutePointerReport(Button::up, {0.5, 0.5});
    std::size_t accepted = 0;
    for (auto _ : state) {
        for (int i = 0; i < kBurst; ++i) bench.hid.send(report.id, report.bytes(), bench.phone);
        accepted += bench.takeAcceptedAt().size();
    }
    const auto sent = static_cast<double>(state.iterations()) * kBurst;
    if (static_cast<double>(accepted) != sent) state.SkipWithError("reports are missing");
    state.counters["time_per_report"] =
        benchmark::Counter(sent, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(sendAndDrain)->UseRealTime();

}  // namespace
}  // namespace tandrel
