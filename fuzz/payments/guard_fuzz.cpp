#include <cstdlib>

#include "payments/guard_check.h"
#include "payments/guard_patterns.h"
#include "payments/guarded_action.h"

// A search only where a keyword stands, and for amounts only around it, finds what one of the whole
// text does.
static void compareSearches(const std::string& line) {
    using namespace tandrel::PaymentGuard;
    for (int number = 0; number <= static_cast<int>(Rule::word); ++number) {
        const auto rule = static_cast<Rule>(number);
        if (has(rule, line) != regex(rule).has(line)) std::abort();
    }
    if (all(Rule::money, line) != regex(Rule::money).all(line)) std::abort();
}

// A fixture file that was tampered with, and the same bytes as lines of a screen and as the body of
// a request.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tandrel;
    const std::string text(reinterpret_cast<const char*>(data), std::min<std::size_t>(size, 4096));
    if (const auto fixtures = PaymentGuard::parseFixtures(text)) {
        for (const auto& fixture : *fixtures) PaymentGuard::differences(fixture);
    }

    ReadText screen;
    for (std::size_t at = 0; at < text.size(); at += kLongestGuardLine) {
        compareSearches(text.substr(at, kLongestGuardLine));
        screen.records.push_back({text.substr(at, kLongestGuardLine), 1, 0, 0, 9, 9});
    }
    const auto reading = screenReading(PixelBuffer(), screen, {9, 9});
    const auto& frame = std::get<GateFrame>(reading);
    PaymentGuard::assess(frame.lines, {9, 9}, {.x = 0.5, .y = 0.5});
    const auto payment = PaymentGuard::details(frame.texts());
    for (const auto& entry : payment.amounts) {
        if (entry.empty()) std::abort();
    }

    if (const auto body = parseJson(text)) {
        for (const char* path : {"/tap", "/swipe", "/nudge", "/type", "/key"}) {
            HTTPRequest request;
            request.path = path;
            request.body = *body;
            const auto guarded = guardedAction(request, {1206, 2622}, {}, {});
            if (guarded) dependsOnUnread(*guarded, frame);
        }
    }
    return 0;
}
