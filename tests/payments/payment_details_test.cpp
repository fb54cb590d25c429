#include "payments/payment_details.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include "payments/parts.h"

namespace tandrel::PaymentGuard {
namespace {

TEST(PaymentDetails, NormRepairsAndTrims) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"pound", "Â£9.99", "£9.99"},
        {"yen", "Â¥500", "¥500"},
        {"twice", "Â£1 Â£2", "£1 £2"},
        {"an a with a circumflex", "Châtelet", "Châtelet"},
        {"runs of spaces", "1\u00A0\u202F 249,00 \n €", "1 249,00 €"},
        {"spaces at the ends", " \t€5 \t", "€5"},
        {"punctuation at the end", "€5.,:;?!", "€5"},
        {"punctuation before a space stays", "€5. ", "€5"},
        {"nothing but punctuation", "...", ""},
        {"nothing", " ", ""},
    };
    for (const auto& [name, text, result] : cases) EXPECT_EQ(norm(text), result) << name;
    // Read as Windows-1252 and as Latin-1.
    const std::pair<std::string, std::string> symbols[] = {
        {"\u00AC", "€"}, {"\u00B9", "₹"}, {"\u00BD", "₽"}, {"\u00A9", "₩"},
        {"\u00BA", "₺"}, {"\u00B4", "₴"}, {"\u00A6", "₦"}, {"\u00B1", "₱"}};
    for (const auto& [last, symbol] : symbols) {
        EXPECT_EQ(norm("\u00E2\u201A" + last + "25"), symbol + "25");
        EXPECT_EQ(norm("\u00E2\xC2\x82" + last + "25"), symbol + "25");
    }
}

TEST(PaymentDetails, CollectsAmountsAndPayees) {
    const std::string longName = "Abcdefghij Abcdefghij Abcdefghij Abcdefghij Abcdefghij";
    const std::tuple<const char*, std::string, const char*, std::string> cases[] = {
        {"amounts once, in order", "€5 and €7 / €5. / 7 kr", "€5, €7, 7 kr", ""},
        {"plain digits are no amount", "Total 25.00", "", ""},
        {"caption and value on one line", "Recipient: Ilse Varga", "", "Ilse Varga"},
        {"with an en dash", "Merchant – Blue Door", "", "Blue Door"},
        {"cut to 48 characters", "Payee: " + longName, "",
         "Abcdefghij Abcdefghij Abcdefghij Abcdefghij Abcd"},
        {"spaces are cleaned before the cut", "Payee: A\u00A0 \u202F " + longName, "",
         "A Abcdefghij Abcdefghij Abcdefghij Abcdefghij Ab"},
        {"nothing left of the value", "Payee: ...", "", ""},
        {"caption, value below", "To / Ilse Varga", "", "Ilse Varga"},
        {"value of one character", "To / I", "", ""},
        {"value of two", "To / Io", "", "Io"},
        {"value of 60 characters", "Name / " + std::string(60, 'x'), "", std::string(48, 'x')},
        {"value of 61", "Name / " + std::string(61, 'x'), "", ""},
        {"value that is an amount", "To / €5", "€5", ""},
        {"caption at the end", "Hello / Recipient", "", ""},
        {"pay button", "Pay Ilse O’Neil", "", "Ilse O’Neil"},
        {"pay button without a name", "Pay now / Pay with card / Pay your / Pay money", "", ""},
        {"pay button with an amount", "Pay Ilse kr 20", "kr 20", ""},
        {"to, on a line with an amount", "€25 to Ilse Varga for lunch", "€25", "Ilse Varga"},
        {"to, on a line that begins with send", "Send to O’Neil & Co • Savings", "", "O’Neil & Co"},
        {"to, on any other line", "Welcome to Lisbon", "", ""},
        {"to, before a bracket", "Transfer to Ilse (Savings)", "", "Ilse"},
        {"to a word that is none", "Send to your / Transfer to the", "", ""},
        {"to, with spaces left after the cut", "Send to my  at home", "", ""},
        {"iban", "IBAN NL91 ABNA 0417 1643 00", "", "NL91 ABNA 0417 1643 00"},
        {"iban in small letters is none", "nl91 abna 0417 1643 00", "", ""},
        {"card", "Visa card ending in •••• 8820", "", "card ending 8820"},
        {"account", "account ending 4417", "", "card ending 4417"},
        {"same name by two rules once", "Recipient: Ilse / To / Ilse", "", "Ilse"},
    };
    for (const auto& [name, texts, amounts, payees] : cases) {
        const Details found = details(parts(texts));
        EXPECT_EQ(fmt::format("{}", fmt::join(found.amounts, ", ")), amounts) << name;
        EXPECT_EQ(fmt::format("{}", fmt::join(found.payees, ", ")), payees) << name;
    }
}

TEST(PaymentDetails, WordsForTheOwner) {
    const std::tuple<Details, const char*, const char*> cases[] = {
        {{}, "Approve a payment?", "no amount shown"},
        {{{"€5"}, {}}, "Approve a payment of €5?", "€5"},
        {{{}, {"Ilse"}}, "Approve a payment?", "to Ilse"},
        {{{"€5"}, {"Ilse"}}, "Approve €5 to Ilse?", "€5 to Ilse"},
        {{{"€5"}, {"A", "B", "C", "D", "E"}},
         "Approve €5 to A?",
         "€5 to A (also on screen: B, C, D)"},
        {{{}, {"A", "B"}}, "Approve a payment?", "to A (also on screen: B)"},
        {{{"1 €", "2 €"}, {}}, "Approve a payment? Screen shows 1 € and 2 €", "1 €, 2 €"},
        {{{"1 €", "2 €", "3 €", "4 €", "5 €"}, {"A", "B"}},
         "Approve a payment? Screen shows 1 € and 2 € and 3 €",
         "1 €, 2 €, 3 €, 4 € (to A?)"},
    };
    for (const auto& [payment, title, summary] : cases) {
        EXPECT_EQ(payment.title(), title);
        EXPECT_EQ(payment.summary(), summary);
    }
}

TEST(PaymentDetails, KeyIsTheSameForTheSamePayment) {
    const Details one{{"1 249,00 €", "€5"}, {"Ilse Varga"}};
    EXPECT_EQ(one.key(), "a=1249,00€|€5;p=ilsevarga");
    EXPECT_EQ((Details{{"€ 5", "1\u00A0249,00\u202F€"}, {"ILSE  VARGA"}}).key(), one.key());
    EXPECT_NE((Details{{"€5"}, {"Ilse Varga"}}).key(), one.key());
    EXPECT_NE((Details{{"1 249,00 €", "€5"}, {"Ilse Vargo"}}).key(), one.key());
    EXPECT_EQ(Details{}.key(), "a=;p=");
}

}  // namespace
}  // namespace tandrel::PaymentGuard
