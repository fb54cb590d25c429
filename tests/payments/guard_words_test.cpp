#include "payments/guard_words.h"

#include <fstream>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include "base/json.h"
#include "payments/folded_text.h"
#include "support/temporary_folder.h"

namespace tandrel::PaymentGuard {
namespace {

Phrases found(const std::string& text, const GuardWords& words = *GuardWords::builtIn()) {
    return words.find(folded(text));
}

TEST(GuardWords, KnowsAmountsThatTheFirstLayerLacks) {
    const std::pair<const char*, std::optional<std::string>> rows[] = {
        {"Razem 361,99 zł", "361,99 zł"},
        {"60 zt", "60 zt"},  // as a recogniser of English reads zł
        {"214,90 R$", "214,90 R$"},
        {"Pão R$ 8", "R$ 8"},  // and not "$ 8"
        {"1 290 Kč", "1 290 Kč"},
        {"4990 Ft", "4990 Ft"},
        {"149 kr", "149 kr"},
        {"Rs 450", "Rs 450"},
        {"2,300円", "2,300円"},
        {"36.5元", "36.5元"},
        {"2,500 sats", "2,500 sats"},
        {"0.0042 BTC", "0.0042 BTC"},
        {"１２００円", "1200円"},
        {"EUR25.00", "EUR25.00"},
        {"€5", "€5"},
        {"19,99 km", std::nullopt},
        {"Kč", std::nullopt},
        {"12 ftt", std::nullopt},
        {"Route 66", std::nullopt},
    };
    for (const auto& [text, amount] : rows) {
        EXPECT_EQ(GuardWords::builtIn()->amount(plain(text)), amount) << text;
    }
}

TEST(GuardWords, FindsAPhraseHoweverItIsWritten) {
    for (const char* text : {"Jetzt bezahlen", "JETZT BEZAHLEN!", "Jetzt mit PayPal bezahlen",
                             "ｊｅｔｚｔ ｂｅｚａｈｌｅｎ", "Zapłać teraz", "Zaptac teraz",
                             "zaplac teraz", "お支払いを確定する", "P A Y  N O W", "Рay now"}) {
        EXPECT_TRUE(found(text).isAll(Word::pay)) << text;
    }
    for (const char* text : {"", "Bezahlte Rechnungen", "N O W  P A", "支", "Payments"}) {
        EXPECT_FALSE(found(text).isAll(Word::pay)) << text;
    }
    EXPECT_TRUE(found("View my order").startsWith(Word::harmless));
    EXPECT_TRUE(found("Sendung verfolgen").endsWith(Word::harmlessEnd));
    EXPECT_EQ(found("one two three").words, 3u);
}

// All files are looked up together, so that one language's "no" must not be another one's "pay":
// Spanish "pago" is a payment, Portuguese "pago" is paid.
TEST(GuardWords, NoLanguageSoothesWhereAnotherPays) {
    std::map<std::string, std::set<std::string>> pays;  // phrase to languages
    std::map<std::string, std::set<std::string>> soothes;
    for (const auto& file : builtInWordFiles()) {
        const Json json = *parseJson(file.content);
        const auto collect = [&](const char* list, auto& into) {
            for (const auto& phrase : json.value(list, Json::array()))
                into[folded(phrase.get<std::string>())].emplace(file.name);
        };
        for (const char* list : {"pay", "payStart", "due", "consent"}) collect(list, pays);
        for (const char* list : {"dismiss", "settled", "overview", "harmless"})
            collect(list, soothes);
    }
    ASSERT_GT(pays.size(), 500u);
    for (const auto& [phrase, languages] : soothes) {
        const auto found = pays.find(phrase);
        if (found == pays.end()) continue;
        // Within one language a phrase may do both, at different places.
        EXPECT_EQ(found->second, languages) << phrase;
    }
}

TEST(GuardWords, AFileCanAddAndNeverTakeAway) {
    const auto words = GuardWords::with(
        R"({"pay":["maksa nyt"],"currencies":["mk"],"dismiss":["pay now"],"speech":["maksa"],)"
        R"("settled":["loppu"],"harmless":["osta"]})");
    ASSERT_TRUE(words);
    EXPECT_TRUE(found("Maksa nyt", **words).isAll(Word::pay));
    EXPECT_EQ((*words)->amount("25 mk"), "25 mk");
    EXPECT_TRUE(found("Jetzt bezahlen", **words).isAll(Word::pay)) << "what shipped stays";
    for (const Word soothing : {Word::dismiss, Word::speech, Word::settled, Word::harmless}) {
        for (const char* text : {"pay now", "maksa", "loppu", "osta"}) {
            EXPECT_FALSE(found(text, **words).contains(soothing)) << text;
        }
    }
}

TEST(GuardWords, AFileThatIsNoneIsRefusedOrPassedOver) {
    for (const char* file : {"", "7", "{}", R"({"pay":7})", R"({"pay":[7]})", R"({"pay":[""]})",
                             R"({"pay":["!!"]})", R"({"pay":["x"]})", R"({"currencies":["5"]})",
                             R"({"pay":["one two three four five six seven eight"]})"}) {
        EXPECT_FALSE(GuardWords::with(file)) << file;
    }
    const TemporaryFolder folder;
    std::ofstream(folder.path() / "de.json") << "{\"pay\":[";
    std::ofstream(folder.path() / "fi.json") << R"({"pay":["maksa nyt"]})";
    testing::internal::CaptureStderr();
    const auto words = GuardWords::load(folder.path());
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(found("Maksa nyt", *words).isAll(Word::pay));
    EXPECT_TRUE(found("Jetzt bezahlen", *words).isAll(Word::pay));
    EXPECT_NE(log.find("can't use"), log.npos) << log;
    EXPECT_NE(log.find("fr.json is missing"), log.npos) << log;
}

}  // namespace
}  // namespace tandrel::PaymentGuard
