#include "app/modes.h"

#include <cstdio>

#include <fmt/format.h>

#include "app/application.h"
#include "app/drawn_cases.h"
#include "app/mirror_tools.h"
#include "app/owner_modes.h"
#include "app/screenshots.h"
#include "app/self_test.h"
#include "app/settings_command.h"
#include "app/wiring.h"
#include "payments/approvals.h"
#include "payments/guard_check.h"
#include "payments/guard_report.h"
#include "payments/rules_listing.h"

namespace tandrel {
namespace {

int printVersion(const Arguments&) {
    fmt::print("Tandrel {}\n", AppInfo::ofThisProgram().version);
    return 0;
}

int checkGuard(const Arguments& arguments) {
    return PaymentGuard::checkFixtures(arguments.size() > 1 ? arguments[1] : "");
}

int listRules(const Arguments& arguments) {
    const bool json = arguments.size() > 1 && arguments[1] == "--json";
    return PaymentGuard::printRules(json ? PaymentGuard::RulesFormat::json
                                         : PaymentGuard::RulesFormat::table);
}

int reportGuard(const Arguments& arguments) {
    if (arguments.size() < 2) {
        fmt::print(stderr, "usage: tandrel-app --guard-report FILE...\n");
        return 1;
    }
    const auto reader = DrawnCases::make();
    if (!reader) {
        fmt::print(stderr, "{}\n", reader.error().message);
        return 1;
    }
    return PaymentGuard::reportCases({arguments.begin() + 1, arguments.end()}, **reader);
}

int selfTest(const Arguments&) { return runSelfTest(AppInfo::ofThisProgram()); }

int renderSteps(const Arguments& arguments) {
    return Screenshots::render({arguments.begin() + 1, arguments.end()}, AppInfo::ofThisProgram());
}

int changeSetting(const Arguments& arguments) {
    return setSetting(arguments, AppFiles::of(AppInfo::ofThisProgram()));
}

int showApprovals(const Arguments& arguments) {
    const bool json = arguments.size() > 1 && arguments[1] == "--json";
    return printApprovals(AppFiles::of(AppInfo::ofThisProgram()).approvals,
                          json ? ApprovalsFormat::json : ApprovalsFormat::table);
}

int printHelp(const Arguments&);

// clang-format off
constexpr Mode kModes[] = {
    {"--version",      "",               "print the version",                                  printVersion},
    {"--helper-check", "[run]",          "say whether AI apps can start the helper",           runHelperCheck},
    {"--doctor",       "[--json]",       "say what keeps an assistant from using the phone",   runDoctor},
    {"--connect",      "[APP]",          "add Tandrel to claude-code, claude-desktop or codex", runConnect},
    {"--phone-test",   "[DEVICE]",       "run a short, harmless test on the phone",            runPhoneTest},
    {"--guard-check",  "FILE",           "run the payment guard over a file of recorded cases", checkGuard},
    {"--guard-report", "FILE...",        "judge files of cases and say what was right and wrong", reportGuard},
    {"--guard-rules",  "[--json]",       "list the rules of the payment guard's second layer", listRules},
    {"--self-test",    "",               "run the fixtures that ship with the program",        selfTest},
    {"--render-steps", "DIR [--dark] [--scale N]", "draw every window into picture files",      renderSteps},
    {"--approvals",    "[--json]",       "list what the owner was asked and answered",         showApprovals},
    {"--set",          "NAME VALUE",     "change a setting: paused true|false, link cable|airplay, grabber NAME, languages eng+deu", changeSetting},
    {"--help",         "",               "print this",                                         printHelp},
};
// clang-format on

int printHelp(const Arguments&) {
    fmt::print(
        "Tandrel lets an AI assistant see and operate an iPhone.\n\n"
        "usage: tandrel-app              start the application; Ctrl-C ends it\n"
        "       tandrel-app --ask-here   the same, and ask about payments on this terminal\n"
        "       tandrel-app OPTION       one of the options below\n"
        "       tandrel-app TOOL ...     a picture tool (tandrel-app help lists "
        "them)\n\noptions:\n");
    for (const Mode& mode : kModes) {
        fmt::print("  {:<36}{}\n", fmt::format("{} {}", mode.argument, mode.operands), mode.help);
    }
    fmt::print(
        "\nTANDREL_VIRTUAL_PHONE=1 plugs in a virtual iPhone instead of a real one.\n"
        "Everything else is in the manual page, tandrel-app(1).\n");
    return 0;
}

}  // namespace

std::span<const Mode> modes() { return kModes; }

int runProgram(const Arguments& arguments) {
    if (arguments.empty()) return runApplication(arguments);
    for (const Mode& mode : kModes) {
        if (mode.argument == arguments.front()) return mode.run(arguments);
    }
    if (!arguments.front().starts_with("-")) {
        if (const auto status = runMirrorTool(arguments)) return *status;
    }
    return runApplication(arguments);
}

}  // namespace tandrel
