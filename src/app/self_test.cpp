#include "app/self_test.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "hid/report_map.h"
#include "payments/guard_check.h"
#include "payments/rules_listing.h"
#include "platform/virtual/scenario.h"

namespace tandrel {
namespace {

struct Tally {
    int passed = 0;
    int failed = 0;

    void count(bool ok, const std::string& what, const std::string& why = {}) {
        ++(ok ? passed : failed);
        fmt::print("{} {}{}\n", ok ? "ok  " : "FAIL", what, why.empty() ? "" : ": " + why);
    }
};

void checkGuard(const std::filesystem::path& share, Tally& tally) {
    const auto files = PaymentGuard::shippedFixtures(share);
    tally.count(!files.empty(), "payment guard's cases are installed");
    for (const auto& file : files) {
        const int status = PaymentGuard::checkFixtures(file);
        tally.count(status == 0, "payment guard: " + file.filename().string());
    }
}

void checkGuardRules(Tally& tally) {
    for (const auto& rule : PaymentGuard::widerRules()) {
        const auto faults = PaymentGuard::exampleFaults(rule);
        tally.count(faults.empty(), fmt::format("payment guard's rule: {}", rule.name),
                    fmt::format("{}", fmt::join(faults, "; ")));
    }
}

void checkScenarios(const std::filesystem::path& share, Tally& tally) {
    std::error_code error;
    for (const auto& entry :
         std::filesystem::directory_iterator(share / "tandrel/scenarios", error)) {
        if (entry.path().extension() != ".json") continue;
        const auto scenario = loadScenario(entry.path());
        tally.count(scenario.has_value(), "scenario: " + entry.path().filename().string(),
                    scenario ? "" : scenario.error().message);
    }
    tally.count(!error, "scenarios are installed", error ? error.message() : "");
}

}  // namespace

int runSelfTest(const AppInfo& info) {
    Tally tally;
    const auto share = info.bundle / "share";
    tally.count(info.version != "dev", "share/tandrel/info.json is installed");
    tally.count(HIDReportMap::descriptor.size() == 198, "report map is 198 bytes");
    checkGuard(share / "tandrel", tally);
    checkGuardRules(tally);
    checkScenarios(share, tally);
    fmt::print("{} passed, {} failed\n", tally.passed, tally.failed);
    return tally.failed == 0 ? 0 : 1;
}

}  // namespace tandrel
