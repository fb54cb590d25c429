#include "payments/wider_guard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "payments/rules_listing.h"

namespace tandrel::PaymentGuard {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

std::string printed(RulesFormat format) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* out = open_memstream(&text, &size);
    EXPECT_EQ(printRules(format, out), 0);
    std::fclose(out);
    const std::string result(text, size);
    free(text);
    return result;
}

TEST(WiderRules, EveryRowsExamplesHold) {
    for (const auto& rule : widerRules()) EXPECT_THAT(exampleFaults(rule), IsEmpty()) << rule.name;
}

TEST(WiderRules, AnExampleThatDoesNotHoldIsNamed) {
    const auto seesNothing = [](const WideScreen&) { return std::optional<std::string>(); };
    const WiderRule rule{.name = "idle",
                         .sees = "nothing",
                         .why = "",
                         .catches = {"> Pay now"},
                         .leaves = {"> Jetzt bezahlen"},
                         .judge = seesNothing};
    EXPECT_THAT(exampleFaults(rule),
                ElementsAre(StartsWith("the first layer asks already: a payment button"),
                            "it does not see what it must catch",
                            StartsWith("pay-words asks about what must be left alone: ")));
}

TEST(WiderRules, AreListedWithNameReasonAndBothExamples) {
    const auto& first = widerRules().front();
    EXPECT_THAT(printed(RulesFormat::table),
                HasSubstr("pay-words\n  sees     " + std::string(first.sees) + "\n  because  " +
                          std::string(first.why) +
                          "\n  asks     Warenkorb / > Zahlungspflichtig bestellen\n"
                          "  leaves   Warenkorb / > Zahlen und Fakten\n"));
    const Json rules = Json::parse(printed(RulesFormat::json))["rules"];
    ASSERT_EQ(rules.size(), widerRules().size());
    EXPECT_EQ(rules[0]["name"], "pay-words");
    EXPECT_EQ(rules[0]["asks"], "Warenkorb\n> Zahlungspflichtig bestellen");
}

}  // namespace
}  // namespace tandrel::PaymentGuard
