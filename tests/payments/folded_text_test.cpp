#include "payments/folded_text.h"

#include <gtest/gtest.h>

namespace tandrel::PaymentGuard {
namespace {

TEST(FoldedText, WhatLooksAlikeFoldsAlike) {
    const std::pair<const char*, const char*> rows[] = {
        {"PAY NOW", "pay now"},
        {"Ｐａｙ　ｎｏｗ", "pay now"},                // full-width forms
        {"Pаy nоw", "pay now"},                       // Cyrillic а and о
        {"C0nfirm", "Confirm"},                       // a digit for a letter
        {"Confirrn", "Confirm"},                      // rn for m
        {"Jetzt bezahlen\u00ad!", "jetzt bezahlen"},  // a soft hyphen
        {"Überweisen", "U\u0308berweisen"},           // composed and decomposed
        {"confirmer", "CONFIRMER"},                   //
        {"ｶｰﾄﾞ", "カード"},                           // half-width kana
        {"تأكيد الدَّفع", "تأكيد الدفع"},               // vowel signs
        {"pay\u00a0now", "pay now"},                  // a no-break space
        {"Pay — now…", "pay now"},                    // marks between words
    };
    for (const auto& [written, meant] : rows) {
        EXPECT_EQ(folded(written), folded(meant)) << written;
        EXPECT_FALSE(folded(written).empty()) << written;
    }
}

TEST(FoldedText, OtherWordsStayOtherWords) {
    EXPECT_NE(folded("pay now"), folded("paynow"));
    EXPECT_NE(folded("оплатить"), folded("оплачено"));
    EXPECT_NE(folded("支付"), folded("支出"));
    for (const char* wordless : {"", "   ", "…", "➤", "€"}) EXPECT_EQ(folded(wordless), "");
}

TEST(FoldedText, NoBytesAreTooOdd) {
    for (const char* odd : {"\xff\xfe", "Pay\xc3", "\xf0\x9f\x98", "a\xcc\x81\xcc\x81\xcc\x81"}) {
        folded(odd);
        plain(odd);
        unmasked(odd);
        EXPECT_FALSE(reversed(odd).empty());
    }
    const std::string marks = "a" + std::string(2000, '\xcc') + "\x81";
    folded(marks);
    unmasked(marks);
}

TEST(FoldedText, OnlyWordsThatPassThemselvesOffAsLatinAreSpelledInIt) {
    const std::pair<const char*, const char*> rows[] = {
        {"Pаy nоw", "pay now"},         {"C0nfirm", "confirm"}, {"5ubscribe", "subscribe"},
        {"Βuy nοw", "Buy now"},        // a Greek capital, and a small letter
        {"Оплатить", "Оплатить"},      // Russian, and it looks it
        {"Pay 10 now", "Pay 10 now"},  // a number of its own
        {"Πληρωμή", "Πληρωμή"},        // Greek
        {"Total €5.00", "Total €5.00"},
    };
    for (const auto& [written, spelled] : rows) {
        EXPECT_EQ(unmasked(written), spelled);
    }
}

TEST(FoldedText, AMirrorTurnsCharactersAndNotBytes) {
    EXPECT_EQ(reversed("won yaP"), "Pay now");
    EXPECT_EQ(reversed("nelhaz eb"), "be zahlen");
    EXPECT_EQ(reversed("🇩🇪é€"), "€é🇩🇪");
    EXPECT_EQ(reversed(""), "");
}

}  // namespace
}  // namespace tandrel::PaymentGuard
