#include "payments/guard_patterns.h"

#include <gtest/gtest.h>

namespace tandrel::PaymentGuard {
namespace {

// The bytes of characters that an editor shows as a plain space, comma, quote or dash.
TEST(GuardPatterns, HoldTheirSpecialCharacters) {
    const struct {
        const char* name;
        Rule rule;
        std::string_view bytes;
        int times;
    } cases[] = {
        {"no-break space in an amount", Rule::money, "\\d[\\d.,\xC2\xA0 ]*\\s?", 1},
        {"no-break space in a price", Rule::priceOnly, "\\d[\\d.,\xC2\xA0 ]*\\s?", 1},
        {"low quote of a mis-decoded symbol", Rule::money, "\xC3\xA2[\\u0082\xE2\x80\x9A]", 2},
        {"no-break and narrow no-break space", Rule::spaces, "[\\s\xC2\xA0\xE2\x80\xAF]+", 1},
        {"curly apostrophe in you'll", Rule::iosMoneyWords, "you('|\xE2\x80\x99)ll", 1},
        {"curly apostrophe in a name", Rule::payeeTo, ".&'\xE2\x80\x99 -]", 1},
        {"curly apostrophe in a paid name", Rule::payeePay, ".&'\xE2\x80\x99 -]", 1},
        {"en dash after a caption", Rule::payeeInline, "[:\\-\xE2\x80\x93]", 1},
        {"middle dot and bullet after a name", Rule::payeeCut, "[\xC2\xB7\xE2\x80\xA2|(]", 1},
    };
    for (const auto& c : cases) {
        int found = 0;
        const auto text = pattern(c.rule);
        for (auto at = text.find(c.bytes); at != text.npos; at = text.find(c.bytes, at + 1))
            ++found;
        EXPECT_EQ(found, c.times) << c.name;
    }
}

TEST(GuardPatterns, MoneyFindsAmounts) {
    const struct {
        const char* text;
        const char* amount;  // empty: none
    } cases[] = {
        {"€25.00", "€25.00"},
        {"25,00 €", "25,00 €"},
        {"1\u00A0234\u00A0567,50\u00A0€", "1\u00A0234\u00A0567,50\u00A0€"},
        {"USD 5", "USD 5"},
        {"usd5", ""},
        {"5 usd", "5 usd"},
        {"fusd 5", ""},
        {"kr 100", "kr 100"},
        {"kr. 100", "kr. 100"},
        {"100 kr.", "100 kr."},
        {"100 kronor", "100 kr"},
        {"₦1,000", "₦1,000"},
        {"₱20", "₱20"},
        {"Â¥500", "Â¥500"},
        {"\u00E2\u201A\u00BD500", "\u00E2\u201A\u00BD500"},
        {"500 \u00E2\xC2\x82\u00A9", "500 \u00E2\xC2\x82\u00A9"},
        {"500 \u00E2,\u00A9", ""},
        {"25.00", ""},
        {"$$", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(first(Rule::money, c.text).value_or(""), c.amount) << c.text;
}

// One text for every alternative of the long rules, so that a dropped one shows.
struct Alternatives {
    Rule rule;
    std::vector<const char*> yes;
    std::vector<const char*> no;
};

const Alternatives kAlternatives[] = {
    {Rule::payment,
     {"pay",
      "Pay now",
      "buy",
      "buy now",
      "1-tap buy",
      "purchase",
      "place order",
      "place your order",
      "check out",
      "checkout",
      "complete purchase",
      "complete order",
      "confirm and pay",
      "confirm transfer",
      "subscribe",
      "start trial",
      "start free trial",
      "donate",
      "send money",
      "transfer",
      "tip",
      "top up",
      "topup",
      "add money",
      "add funds",
      "add balance",
      "reload",
      "withdraw"},
     {"payment", "buyer", "place", "tips", "start", "add friend", "subscriber"}},
    {Rule::commit,
     {"Confirm",   "• continue", "ok",     "okay",   "done",  "next",   "send",     "submit",
      "proceed",   "approve",    "accept", "agree",  "yes",   "finish", "complete", "place",
      "authorise", "authorize",  "verify", "redeem", "apply", "swipe",  "slide"},
     {"confirmed", "not ok", "cancel", "back"}},
    {Rule::moneyWords,
     {"total",       "amount",        "subtotal",   "balance",      "payment",   "pay",
      "price",       "charge",        "charged",    "card ending",  "iban",      "recipient",
      "beneficiary", "order summary", "checkout",   "subscription", "per month", "per year",
      "per week",    "monthly",       "yearly",     "in-app",       "top up",    "gift card",
      "wallet",      "transfer",      "send money", "fee"},
     {"totals", "paying", "per day", "fees"}},
    {Rule::iosMoneyWords,
     {"in-app purchase", "renew", "renews", "billed", "shipping", "delivery", "tax", "vat",
      "order total", "you'll be charged", "you’ll be charged", "apple cash", "apple pay",
      "apple account", "sort code", "account number", "send", "sending", "to"},
     {"renewal", "today", "taxi"}},
    {Rule::sheet,
     {"double-click to pay", "Double press the side button to confirm", "double click side button",
      "confirm with side button", "confirm with the FaceID", "confirm with touch id",
      "confirm with passcode", "pay with passcode", "pay with face id"},
     {"double click", "click the side button", "unlock with face id"}},
    {Rule::commitButton,
     {"Confirm", "Confirm booking", "Send", "Send now", "send it", "send €5", "transfer",
      "Transfer now", "authorize", "Authorise", "approve", "complete", "Slide to book", "→ Send ←"},
     {"confirm my booking", "send flowers", "transfer money", "completed", "resend"}},
    {Rule::strong,
     {"Pay",
      "pay now",
      "Pay with card",
      "Pay €5",
      "Pay 5",
      "Buy",
      "buy now",
      "1-tap buy",
      "Purchase",
      "purchase now",
      "purchase for €5",
      "Purchase €5",
      "place order",
      "place your order",
      "complete payment",
      "confirm and pay",
      "confirm subscription",
      "Subscribe",
      "subscribe now",
      "subscribe for €5",
      "Subscribe €5",
      "send money",
      "send payment",
      "Check out",
      "checkout",
      "top up",
      "Donate",
      "• Pay •"},
     {"Pay Ilse", "payment", "buy milk", "purchase history", "subscribe to news", "donate clothes",
      "check out this", "I pay"}},
};

TEST(GuardPatterns, EveryAlternativeFinds) {
    for (const auto& c : kAlternatives) {
        for (const char* text : c.yes)
            EXPECT_TRUE(has(c.rule, text)) << text << " in " << pattern(c.rule);
        for (const char* text : c.no)
            EXPECT_FALSE(has(c.rule, text)) << text << " in " << pattern(c.rule);
    }
}

}  // namespace
}  // namespace tandrel::PaymentGuard
