#include "payments/guard_report.h"

#include <algorithm>
#include <map>

#include <fmt/format.h>

#include "payments/printable.h"
#include "payments/wider_guard.h"
#include "payments/wider_rules.h"

namespace tandrel::PaymentGuard {
namespace {

// What the guard said of a case.
struct Outcome {
    const GuardCase* one = nullptr;
    bool first = false;                  // the first layer asks
    std::optional<WiderVerdict> second;  // the second one, where the first does not
    bool onlyRule = false;               // without that rule nobody would ask

    bool asked() const { return first || second; }
};

Outcome judge(const GuardCase& one, const WiderGuard& wider) {
    const auto& [frame, lines, action] = one.screen;
    Outcome outcome{.one = &one, .second = {}};
    outcome.first = assess(lines, frame, action).has_value();
    if (outcome.first) return outcome;
    outcome.second = wider.assess(lines, frame, action);
    if (outcome.second)
        outcome.onlyRule = !wider.assess(lines, frame, action, outcome.second->rule);
    return outcome;
}

struct Tally {
    int cases = 0;
    int first = 0;
    int second = 0;

    void add(const Outcome& outcome) {
        ++cases;
        first += outcome.first ? 1 : 0;
        second += outcome.second ? 1 : 0;
    }
    int asked() const { return first + second; }
};

// Of the cases that must ask, and of those that must not.
struct Pair {
    Tally must;
    Tally mustNot;

    void add(const Outcome& outcome) { (outcome.one->asks ? must : mustNot).add(outcome); }
};

std::string share(int part, int whole) {
    if (whole == 0) return "-";
    return fmt::format("{:.1f} %", 100.0 * part / whole);
}

void printConfusion(const char* by, const std::map<std::string, Pair>& rows, std::FILE* out) {
    fmt::print(out, "\n{:<22}|         must ask            |        must not ask\n", by);
    fmt::print(out, "{:<22}|cases first second   asked   |cases first second   asked\n", "");
    for (const auto& [name, pair] : rows) {
        const auto& [must, mustNot] = pair;
        fmt::print(out, "{:<22}|{:5} {:5} {:6} {:>9}  |{:5} {:5} {:6} {:>9}\n",
                   printable(name.empty() ? "-" : name), must.cases, must.first, must.second,
                   share(must.asked(), must.cases), mustNot.cases, mustNot.first, mustNot.second,
                   share(mustNot.asked(), mustNot.cases));
    }
}

void printRuleGains(const std::vector<Outcome>& outcomes, std::FILE* out) {
    fmt::print(out, "\n{:<22}|right wrong | left out: gain lost, cost saved\n", "rule");
    for (const auto& rule : widerRules()) {
        int right = 0;
        int wrong = 0;
        int gain = 0;
        int cost = 0;
        for (const auto& outcome : outcomes) {
            if (!outcome.second || outcome.second->rule != rule.name) continue;
            ++(outcome.one->asks ? right : wrong);
            if (outcome.onlyRule) ++(outcome.one->asks ? gain : cost);
        }
        fmt::print(out, "{:<22}|{:5} {:5} | {:14} {:11}\n", rule.name, right, wrong, gain, cost);
    }
}

void printMistakes(const std::vector<Outcome>& outcomes, std::FILE* out) {
    for (const auto& outcome : outcomes) {
        const auto& one = *outcome.one;
        if (outcome.asked() == one.asks) continue;
        std::string why;
        if (outcome.first) why = " [first layer]";
        if (outcome.second)
            why = fmt::format(": {} [{}]", printable(outcome.second->why), outcome.second->rule);
        fmt::print(out, "{} {} / {} / {}{}\n", one.asks ? "missed  " : "needless",
                   printable(one.category), printable(one.language), printable(one.name), why);
    }
}

void printReport(const std::vector<GuardCase>& cases, std::FILE* out) {
    const WiderGuard wider;
    std::vector<Outcome> outcomes;
    std::map<std::string, Pair> categories;
    std::map<std::string, Pair> languages;
    for (const auto& one : cases) {
        outcomes.push_back(judge(one, wider));
        categories[one.category].add(outcomes.back());
        languages[one.language].add(outcomes.back());
    }
    std::map<std::string, Pair> all;
    for (const auto& outcome : outcomes) all["all"].add(outcome);
    printConfusion("category", categories, out);
    printConfusion("language", languages, out);
    printConfusion("", all, out);
    printRuleGains(outcomes, out);
    fmt::print(out, "\n");
    printMistakes(outcomes, out);
}

}  // namespace

int reportCases(const std::vector<std::filesystem::path>& files, CaseReader& reader,
                std::FILE* out) {
    GuardCases all;
    for (const auto& file : files) {
        auto read = readCases(file, reader);
        if (!read) {
            fmt::print(out, "can't read {}: {}\n", printable(file.string()),
                       printable(read.error().message));
            return 1;
        }
        std::ranges::move(read->cases, std::back_inserter(all.cases));
        all.drawn += read->drawn;
        all.unknown += read->unknown;
    }
    fmt::print(out, "{} cases, {} of them read from a picture", all.cases.size(), all.drawn);
    if (all.unknown > 0) fmt::print(out, "; {} left out that say not what is right", all.unknown);
    fmt::print(out, "\n");
    printReport(all.cases, out);
    return 0;
}

}  // namespace tandrel::PaymentGuard
