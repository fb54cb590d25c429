#include <chrono>
#include <cstdio>

#include "engine/running_engine.h"
#include "text/full_frame_tesseract.h"

// What the assistant waits for, on the virtual phone and over HTTP: a look at another page, a
// second look at it, and a tap on another page that the guard lets pass; with Tesseract on full
// frames and with our own reader.
namespace tandrel {
namespace {

// Pages without a payment, so that nobody is asked.
constexpr const char* kPages[] = {"settings", "news", "home", "notes", "general"};
constexpr int kRounds = 3;

struct Waited {
    double newPage = 0, samePage = 0, tap = 0;  // milliseconds on the clock
};

template <typename Work>
double milliseconds(Work&& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

Waited waitedFor(std::unique_ptr<TextRecognizer> recognizer) {
    RunningEngine engine(RunningEngine::kDefaultPhone, std::make_shared<TemporaryFolder>(), nullptr,
                         std::move(recognizer));
    engine.awaitMatched();
    // On the status bar, where a tap changes nothing.
    const Json spot = {{"x", 0.3}, {"y", 0.01}, {"fraction", true}};
    int refused = 0;
    auto look = [&] { refused += engine.get("/look?maxEdge=900").status != 200; };
    auto tap = [&] { refused += engine.post("/tap", spot).status != 200; };
    Waited sum;
    look();
    for (int round = 0; round < kRounds; ++round) {
        for (const char* page : kPages) {
            engine.phone().showPage(page);
            sum.newPage += milliseconds(look);
            sum.samePage += milliseconds(look);
        }
        for (const char* page : kPages) {
            engine.phone().showPage(page);
            sum.tap += milliseconds(tap);
        }
    }
    if (refused > 0) std::printf("%d requests were refused\n", refused);
    const double count = kRounds * std::size(kPages);
    return {sum.newPage / count, sum.samePage / count, sum.tap / count};
}

void print(const char* who, const Waited& waited) {
    std::printf("%-32s %10.1f %10.1f %10.1f\n", who, waited.newPage, waited.samePage, waited.tap);
}

int run() {
    std::printf("%-32s %10s %10s %10s\n", "ms a request", "new page", "again", "tap");
    const Waited before = waitedFor(makeFullFrameTesseract());
    print("Tesseract on full frames", before);
    const Waited now = waitedFor(nullptr);
    print("own reader", now);
    print("times faster",
          {before.newPage / now.newPage, before.samePage / now.samePage, before.tap / now.tap});
    return 0;
}

}  // namespace
}  // namespace tandrel

int main() { return tandrel::run(); }
