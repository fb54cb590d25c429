#include "payments/rules_listing.h"

#include <string>

#include <fmt/format.h>

#include "base/json.h"
#include "payments/wider_guard.h"

namespace tandrel::PaymentGuard {
namespace {

std::string onOneLine(std::string_view example) {
    std::string result;
    for (const char c : example) result += c == '\n' ? std::string(" / ") : std::string(1, c);
    return result;
}

void printTable(std::FILE* out) {
    fmt::print(out,
               "In an example \">\" marks what is tapped, \">>\" a spot right of a text, and \"/\" "
               "the next line.\n\n");
    for (const auto& rule : widerRules()) {
        fmt::print(out, "{}\n  sees     {}\n  because  {}\n  asks     {}\n  leaves   {}\n",
                   rule.name, rule.sees, rule.why, onOneLine(rule.catches.text),
                   onOneLine(rule.leaves.text));
    }
}

}  // namespace

int printRules(RulesFormat format, std::FILE* out) {
    if (format == RulesFormat::table) {
        printTable(out);
        return 0;
    }
    Json rules = Json::array();
    for (const auto& rule : widerRules()) {
        rules.push_back({{"name", rule.name},
                         {"sees", rule.sees},
                         {"why", rule.why},
                         {"asks", rule.catches.text},
                         {"leaves", rule.leaves.text}});
    }
    fmt::print(out, "{}\n", dumpJson({{"rules", rules}}));
    return 0;
}

std::vector<std::string> exampleFaults(const WiderRule& rule) {
    std::vector<std::string> faults;
    const auto lines = rule.catches.lines();
    const Action action = rule.catches.action();
    if (const auto verdict = assess(lines, kExampleFrame, action))
        faults.push_back("the first layer asks already: " + *verdict);
    if (!rule.judge(WideScreen(lines, kExampleFrame, action, *GuardWords::builtIn())))
        faults.emplace_back("it does not see what it must catch");
    const auto others = rule.leaves.lines();
    const Action harmless = rule.leaves.action();
    if (const auto verdict = assess(others, kExampleFrame, harmless))
        faults.push_back("the first layer asks about what must be left alone: " + *verdict);
    if (const auto verdict = WiderGuard().assess(others, kExampleFrame, harmless))
        faults.push_back(
            fmt::format("{} asks about what must be left alone: {}", verdict->rule, verdict->why));
    return faults;
}

}  // namespace tandrel::PaymentGuard
