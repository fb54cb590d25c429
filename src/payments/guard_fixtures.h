#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/json.h"
#include "base/result.h"
#include "payments/payment_guard.h"

namespace tandrel::PaymentGuard {

// One recorded screen with a proposed action and what the guard is to say of it.
struct Fixture {
    struct Expectation {
        std::optional<bool> paymentScreen;
        std::optional<std::optional<std::string>> verdict;  // an inner none: no verdict
        std::optional<std::string> title;
        std::optional<std::string> summary;
    };

    std::string name;
    FrameSize frame;
    std::vector<Line> lines;
    Action action;
    Expectation expect;
};

// What a fixture file may hold; beyond it the file is refused.
inline constexpr std::size_t kLargestFixtureFile = 16u << 20;  // bytes
inline constexpr std::size_t kMostFixtures = 10'000;
inline constexpr std::size_t kMostFixtureLines = 1'000;
inline constexpr std::size_t kLongestFixtureText = 500;  // bytes

// Reads {"cases":[{"name","frame":{"w","h"},"lines":[{"text","conf","x","y","w","h"}],
// "action":{"kind","x","y","x2","y2","text"},"expect":{"paymentScreen","verdict","title",
// "summary"}}]}. "conf", every member of "action" but "kind" and every member of "expect" may be
// missing. The error names the place in the text and what is wrong there.
Result<std::vector<Fixture>> parseFixtures(std::string_view text);
// One of the cases; `where` is what the error calls it.
Result<Fixture> parseFixture(const Json& value, std::string where);
Result<std::vector<Fixture>> readFixtures(const std::filesystem::path& path);

}  // namespace tandrel::PaymentGuard
