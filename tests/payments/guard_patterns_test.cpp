#include "payments/guard_patterns.h"

#include <random>
#include <ranges>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "base/unicode.h"
#include "payments/parts.h"

namespace tandrel::PaymentGuard {
namespace {

// The bytes of characters that an editor shows as a plain space or dot.
TEST(GuardPatterns, HoldTheirSpecialCharacters) {
    EXPECT_NE(pattern(Rule::spaces).find("[\\s\xC2\xA0\xE2\x80\xAF]+"), std::string::npos);
    EXPECT_NE(pattern(Rule::payeeCut).find("[\xC2\xB7\xE2\x80\xA2|(]"), std::string::npos);
}

TEST(GuardPatterns, MoneyFindsAmounts) {
    for (const char* whole : {"€25.00", "25,00 €", "1\u00A0234\u00A0567,50\u00A0€", "USD 5",
                              "5 usd", "kr 100", "kr. 100", "100 kr.", "₦1,000", "₱20", "Â¥500",
                              "\u00E2\u201A\u00BD500", "500 \u00E2\xC2\x82\u00A9"}) {
        EXPECT_EQ(first(Rule::money, whole), whole);
    }
    EXPECT_EQ(first(Rule::money, "100 kronor"), "100 kr");
    for (const char* none : {"usd5", "fusd 5", "500 \u00E2,\u00A9", "25.00", "$$"}) {
        EXPECT_EQ(first(Rule::money, none), std::nullopt) << none;
    }
}

// One text for every alternative of the long rules, so that a dropped one shows.
const std::tuple<Rule, std::string_view, std::string_view> kAlternatives[] = {
    {Rule::payment,
     "pay / Pay now / buy / buy now / 1-tap buy / purchase / place order / place your order / "
     "check out / checkout / complete purchase / complete order / confirm and pay / "
     "confirm transfer / subscribe / start trial / start free trial / donate / send money / "
     "transfer / tip / top up / topup / add money / add funds / add balance / reload / withdraw",
     "payment / buyer / place / tips / start / add friend / subscriber"},
    {Rule::commit,
     "Confirm / • continue / ok / okay / done / next / send / submit / proceed / approve / "
     "accept / agree / yes / finish / complete / place / authorise / authorize / verify / "
     "redeem / apply / swipe / slide",
     "confirmed / not ok / cancel / back"},
    {Rule::moneyWords,
     "total / amount / subtotal / balance / payment / pay / price / charge / charged / "
     "card ending / iban / recipient / beneficiary / order summary / checkout / subscription / "
     "per month / per year / per week / monthly / yearly / in-app / top up / gift card / "
     "wallet / transfer / send money / fee",
     "totals / paying / per day / fees"},
    {Rule::iosMoneyWords,
     "in-app purchase / renew / renews / billed / shipping / delivery / tax / vat / "
     "order total / you'll be charged / you’ll be charged / apple cash / apple pay / "
     "apple account / sort code / account number / send / sending / to",
     "renewal / today / taxi"},
    {Rule::sheet,
     "double-click to pay / Double press the side button to confirm / "
     "double click side button / confirm with side button / confirm with the FaceID / "
     "confirm with touch id / confirm with passcode / pay with passcode / pay with face id",
     "double click / click the side button / unlock with face id"},
    {Rule::commitButton,
     "Confirm / Confirm booking / Send / Send now / send it / send €5 / transfer / "
     "Transfer now / authorize / Authorise / approve / complete / Slide to book / → Send ←",
     "confirm my booking / send flowers / transfer money / completed / resend"},
    {Rule::strong,
     "Pay / pay now / Pay with card / Pay €5 / Pay 5 / Buy / buy now / 1-tap buy / Purchase / "
     "purchase now / purchase for €5 / Purchase €5 / place order / place your order / "
     "complete payment / confirm and pay / confirm subscription / Subscribe / subscribe now / "
     "subscribe for €5 / Subscribe €5 / send money / send payment / Check out / checkout / "
     "top up / Donate / • Pay •",
     "Pay Ilse / payment / buy milk / purchase history / subscribe to news / donate clothes / "
     "check out this / I pay"},
};

TEST(GuardPatterns, EveryAlternativeFinds) {
    for (const auto& [rule, yes, no] : kAlternatives) {
        for (const auto& text : parts(yes)) EXPECT_TRUE(has(rule, text)) << text;
        for (const auto& text : parts(no)) EXPECT_FALSE(has(rule, text)) << text;
    }
}

constexpr auto kEveryRule = std::views::iota(0, static_cast<int>(Rule::word) + 1);

// Searches only where a keyword stands, and for amounts only around it, must find what a search of
// the whole text finds.
void expectAsWholeSearch(std::string_view text) {
    for (const int number : kEveryRule) {
        const auto rule = static_cast<Rule>(number);
        EXPECT_EQ(has(rule, text), regex(rule).has(text)) << text << " in " << pattern(rule);
    }
    EXPECT_EQ(all(Rule::money, text), regex(Rule::money).all(text)) << text;
    EXPECT_EQ(first(Rule::money, text), regex(Rule::money).first(text)) << text;
    EXPECT_EQ(replaceAll(Rule::money, text, "_"), regex(Rule::money).replaceAll(text, "_")) << text;
}

std::string replaced(std::string text, std::string_view from, std::string_view to) {
    for (auto at = text.find(from); at != text.npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

TEST(GuardPatterns, AShorterSearchFindsTheSame) {
    std::string texts =
        "Recipient: Ilse / To / Account ending in 8820 / Pay Ilse for it / password / Paying Ilse "
        "/ "
        "Merchant - Rota / App Store";
    for (const auto& [rule, yes, no] : kAlternatives) texts += fmt::format(" / {} / {}", yes, no);
    for (const auto& text : parts(texts)) {
        expectAsWholeSearch(text);
        std::string capitals = text;
        for (char& c : capitals) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
        expectAsWholeSearch(capitals);
        // Letters that count as ASCII ones when case does not matter.
        expectAsWholeSearch(replaced(text, "s", "\u017F"));
        expectAsWholeSearch(replaced(text, "k", "\u212A"));
        expectAsWholeSearch(replaced(text, "fi", "\uFB01"));
    }
}

TEST(GuardPatterns, AmountsAreFoundWhereverTheyStand) {
    const std::string_view pieces[] = {
        "€",       "$",      "5",      "12",     "usd",    "USD",   "kr", "kr.",
        "Ukraine", " ",      " ",      "\t",     "\n",     ".",     ",",  "\u00A0",
        "\u202F",  "\u00E2", "\u00AC", "\u0082", "\u00C2", "£",     "a",  "u\u017Fd",
        "\u0665",  "é",      "x-",     "\xFF",   "eurgbp", "\u0301"};
    std::mt19937 random(7);  // NOLINT(bugprone-random-generator-seed): the same texts every time
    std::uniform_int_distribution<std::size_t> piece(0, std::size(pieces) - 1);
    std::uniform_int_distribution<int> length(1, 14);
    for (int i = 0; i < 20'000 && !testing::Test::HasFailure(); ++i) {
        std::string text;
        for (int n = length(random); n > 0; --n) text += pieces[piece(random)];
        EXPECT_EQ(all(Rule::money, text), regex(Rule::money).all(text)) << text;
        // A search of the whole text mends bytes that are not UTF-8 in all of it.
        if (!isUtf8(text)) continue;
        EXPECT_EQ(replaceAll(Rule::money, text, "_"), regex(Rule::money).replaceAll(text, "_"));
    }
}

}  // namespace
}  // namespace tandrel::PaymentGuard
