#include "payments/wider_guard.h"

#include <gmock/gmock.h>

#include "payments/parts.h"
#include "payments/printed.h"
#include "payments/rules_listing.h"
#include "payments/written_screen.h"

namespace tandrel::PaymentGuard {
namespace {

using testing::IsEmpty;
using testing::StartsWith;

// The rule that asks about the action; empty when none does.
std::string ruleFor(std::string_view rows, const std::string& action) {
    const auto screen = parseWrittenScreen(parts(rows));
    const auto written = parseWrittenAction(action, screen);
    const auto judged = layOut(screen, *written);
    const auto verdict = WiderGuard().assess(judged->lines, judged->frame, judged->action);
    return verdict ? std::string(verdict->rule) : "";
}

// A screen's name and rows, what is done on it, and the rule that asks; none when empty.
using RuledScreen = std::tuple<const char*, std::string, const char*, const char*>;

TEST(WiderRules, TellLinesOfAListFromButtons) {
    const RuledScreen rows[] = {
        {"a line of a list goes on behind its amount",
         "= Today / Pay the plumber $120 on Friday / (New)", "tap Pay the plumber $120 on Friday",
         ""},
        {"a button does not", "= Today / Plumber / --- / [Pay the plumber his $120]",
         "tap [Pay the plumber his $120]", "amount-button"},
        {"a thing to buy in a list", "= Lista / Leche 1,10 € / Comprar pan / Huevos 2,40 € / Queso",
         "tap Comprar pan", ""},
        {"the only line of errands with an amount",
         "= Errands / Renew bus pass $65 / Order cake / Pay gym", "tap Renew bus pass $65", ""},
        {"one of a list of things that are sold",
         "= Coins / Buy pouch $5 / Buy chest $9 / Buy cart $19", "tap Buy pouch $5",
         "amount-button"},
    };
    for (const auto& [name, screen, action, rule] : rows)
        EXPECT_EQ(ruleFor(screen, action), rule) << name;
}

TEST(WiderRules, TellScreensApartByWhatStandsWhere) {
    const std::string transfer =
        "= Überweisung / Empfänger | Haus Grün / Betrag | 44,00 € / --- / {tick}";
    const RuledScreen rows[] = {
        {"a tick below a title that is a verb, too", transfer, "tap {tick}", "icon-alone"},
        {"a slider under the finger", "= Ride / Comfort | $18.40 / --- / ~Slide to ride~", "swipe",
         "slider"},
        {"no sum beside it", "= Ride / Comfort / --- / ~Slide to ride~", "swipe", ""},
        {"it refuses", "= Ride / $18.40 / --- / ~Slide to cancel~", "swipe", ""},
        {"a secret and a sum without a caption", ":Wpisz kod SMS / :120,00 zł / _Kod SMS_",
         "type 883311", "secret"},
        {"a secret for signing in", ":Sign in / :$10.00 await you / _SMS code_", "type 883311", ""},
        {"a verb at the end of its button",
         "= Saal 3 / Reihe F, 7 und 8 / 2 × 11,50 € / --- / [Plätze kaufen]", "tap [Plätze kaufen]",
         "buying-verb"},
        {"a share with its sign in front", "= Bahşiş / %10 | %15 | %20 / --- / (Bahşişsiz)",
         "tap %15", "tip-share"},
        {"coins to read on", "= 第12話 / 所持 120コイン / --- / [80コインで読む]",
         "tap [80コインで読む]", "standing-units"},
        {"an abbreviation's full stop", "= Plan / Bez limitu / --- / [Wybieram za 19,99 zł/mies.]",
         "tap [Wybieram za 19,99 zł/mies.]", "standing-amount"},
        {"an arrow at the top of a payment",
         "‹ | Kasse |  / Gesamt | 25,00 € / --- / [Jetzt bezahlen]", "tap ‹", ""},
    };
    for (const auto& [name, screen, action, rule] : rows)
        EXPECT_EQ(ruleFor(screen, action), rule) << name;
    EXPECT_EQ(ruleFor(transfer + " / Konten | Karten | Mehr", "tap Karten"), "")
        << "tabs below the tick";
}

TEST(WiderRules, AButtonIsAsWideAsItsRow) {
    const auto askedBeside = [](const std::string& button) {
        const auto screen = parseWrittenScreen({"= Sauna", "€22.00", "---", button});
        auto judged = *layOut(screen, *parseWrittenAction("tap " + button, screen));
        judged.action.x = 0.93;
        return WiderGuard().assess(judged.lines, judged.frame, judged.action).has_value();
    };
    EXPECT_TRUE(askedBeside("[Continue]"));
    EXPECT_FALSE(askedBeside("[Opening hours]"));
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
                testing::ElementsAre(StartsWith("the first layer asks already: a payment button"),
                                     "it does not see what it must catch",
                                     StartsWith("pay-words asks about what must be left alone: ")));
}

TEST(WiderRules, AreListedWithNameReasonAndBothExamples) {
    const auto& first = widerRules().front();
    const auto listed = [](RulesFormat format) {
        return printed([&](std::FILE* out) { return printRules(format, out); }).second;
    };
    EXPECT_THAT(listed(RulesFormat::table),
                testing::HasSubstr("pay-words\n  sees     " + std::string(first.sees) +
                                   "\n  because  " + std::string(first.why) +
                                   "\n  asks     Warenkorb / > Zahlungspflichtig bestellen\n"
                                   "  leaves   Warenkorb / > Zahlen und Fakten\n"));
    const Json rules = Json::parse(listed(RulesFormat::json))["rules"];
    ASSERT_EQ(rules.size(), widerRules().size());
    EXPECT_EQ(rules[0]["name"], "pay-words");
    EXPECT_EQ(rules[0]["asks"], "Warenkorb\n> Zahlungspflichtig bestellen");
}

}  // namespace
}  // namespace tandrel::PaymentGuard
