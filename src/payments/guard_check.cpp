#include "payments/guard_check.h"

#include <algorithm>

#include <fmt/format.h>

#include "payments/printable.h"

namespace tandrel::PaymentGuard {
namespace {

// As JSON, so that quotation marks, spaces and "none" are told apart.
std::string shown(const Json& value) { return printable(dumpJson(value)); }

Json orNull(const std::optional<std::string>& text) { return text ? Json(*text) : Json(); }

}  // namespace

std::vector<std::string> differences(const Fixture& fixture) {
    std::vector<std::string> result;
    const auto compare = [&](std::string_view member, const Json& expected, const Json& came) {
        if (expected == came) return;
        result.push_back(fmt::format("{}: {}: expected {}, came {}", printable(fixture.name),
                                     member, shown(expected), shown(came)));
    };
    const auto seen = texts(fixture.lines);
    const auto& expect = fixture.expect;
    if (expect.paymentScreen) compare("paymentScreen", *expect.paymentScreen, paymentScreen(seen));
    if (expect.verdict) {
        compare("verdict", orNull(*expect.verdict),
                orNull(assess(fixture.lines, fixture.frame, fixture.action)));
    }
    const Details payment = details(seen);
    if (expect.title) compare("title", *expect.title, payment.title());
    if (expect.summary) compare("summary", *expect.summary, payment.summary());
    return result;
}

int checkFixtures(const std::filesystem::path& path, std::FILE* out) {
    const auto fixtures = readFixtures(path);
    if (!fixtures) {
        fmt::print(out, "can't read {}: {}\n", printable(path.string()),
                   printable(fixtures.error().message));
        return 1;
    }
    std::size_t failed = 0;
    for (const auto& fixture : *fixtures) {
        const auto lines = differences(fixture);
        for (const auto& line : lines) fmt::print(out, "{}\n", line);
        if (!lines.empty()) ++failed;
    }
    fmt::print(out, "{} passed, {} failed\n", fixtures->size() - failed, failed);
    return failed == 0 ? 0 : 1;
}

std::vector<std::filesystem::path> shippedFixtures(const std::filesystem::path& share) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(share / "guard", error), end;
         !error && entry != end; entry.increment(error)) {
        if (entry->path().extension() == ".json") files.push_back(entry->path());
    }
    std::ranges::sort(files);
    return files;
}

}  // namespace tandrel::PaymentGuard
