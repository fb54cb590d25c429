#include <filesystem>

#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <unistd.h>

#include "payments/payment_gate.h"

// What the guard costs one action, text recognition apart.
namespace tandrel {
namespace {

constexpr PaymentGuard::FrameSize kFrame{1206, 2622};
constexpr int kLines = 60;

GateFrame screen(const std::vector<std::string>& texts) {
    GateFrame frame;
    frame.size = frame.screen = kFrame;
    for (const auto& text : texts) {
        const double y = 42.0 * static_cast<double>(frame.lines.size()) + 60;
        frame.lines.push_back({text, 60, y, 24.0 * static_cast<double>(text.size()), 36});
    }
    return frame;
}

// A long order on which every rule has something to look at.
GateFrame order() {
    std::vector<std::string> texts = {"9:41", "Review your order", "Ship to", "Mara Lindqvist"};
    while (texts.size() < kLines - 4) {
        const auto number = texts.size();
        texts.push_back(fmt::format("Item {} in sand and grey, size M", number));
        texts.push_back(fmt::format("€{}.90", number));
    }
    texts.insert(texts.end(), {"Total", "€1,249.00", "Card ending in 8820", "Place your order"});
    return screen(texts);
}

GateFrame article() {
    std::vector<std::string> texts = {"9:41", "Markets"};
    while (texts.size() < kLines) {
        texts.push_back("Crude fell for a third day, and diesel dropped below €1.60 at the pump");
    }
    return screen(texts);
}

PaymentGuard::Action tapOnLastLine(const GateFrame& frame) {
    const auto& line = frame.lines.back();
    return {.x = (line.x + 5) / kFrame.width, .y = (line.y + 5) / kFrame.height};
}

void assess(benchmark::State& state, const GateFrame& frame) {
    const auto action = tapOnLastLine(frame);
    for (auto _ : state) {
        benchmark::DoNotOptimize(PaymentGuard::assess(frame.lines, frame.size, action));
    }
}
BENCHMARK_CAPTURE(assess, order_of_60_lines, order())->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(assess, article_of_60_lines, article())->Unit(benchmark::kMillisecond);

// A harmless tap costs both layers, as each rule has its look.
void bothLayers(benchmark::State& state, const GateFrame& frame, std::size_t line) {
    const PaymentGuard::WiderGuard wider;
    const auto& target = frame.lines[line];
    const PaymentGuard::Action action{.x = (target.x + 5) / kFrame.width,
                                      .y = (target.y + 5) / kFrame.height};
    for (auto _ : state) {
        if (PaymentGuard::assess(frame.lines, frame.size, action) ||
            wider.assess(frame.lines, frame.size, action)) {
            state.SkipWithError("a harmless tap is asked about");
        }
    }
}
BENCHMARK_CAPTURE(bothLayers, order_of_60_lines, order(), 3)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(bothLayers, article_of_60_lines, article(), 30)->Unit(benchmark::kMillisecond);

void details(benchmark::State& state, const GateFrame& frame) {
    const auto texts = frame.texts();
    for (auto _ : state) benchmark::DoNotOptimize(PaymentGuard::details(texts));
}
BENCHMARK_CAPTURE(details, order_of_60_lines, order())->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(details, article_of_60_lines, article())->Unit(benchmark::kMillisecond);

struct GuardOn final : UserDefaults {
    std::optional<bool> boolValue(std::string_view) const override { return true; }
    std::optional<std::string> textValue(std::string_view) const override { return std::nullopt; }
    Result<void> set(std::string_view, bool) override { return {}; }
    Result<void> set(std::string_view, std::string) override { return {}; }
};

void wholeGateOnAHarmlessScreen(benchmark::State& state) {
    const GuardOn defaults;
    NobodyAsker nobody(systemClock());
    PaymentLog log(std::filesystem::temp_directory_path() / fmt::format("bench.{}", ::getpid()));
    PaymentGate gate(defaults, nobody, log, systemClock(), {});
    const GateFrame frame = article();
    int performed = 0;
    const GateRoad road{.read = [&] { return ScreenReading(frame); },
                        .perform =
                            [&] {
                                ++performed;
                                return HTTPResponse();
                            },
                        .pointer = {}};
    HTTPRequest request;
    request.method = "POST";
    request.path = "/tap";
    request.body = {{"x", 0.5}, {"y", 0.5}, {"fraction", true}};
    for (auto _ : state) benchmark::DoNotOptimize(gate.run(request, road));
    if (performed != state.iterations()) state.SkipWithError("an action was not performed");
}
BENCHMARK(wholeGateOnAHarmlessScreen)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tandrel
