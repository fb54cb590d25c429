#include "payments/folded_text.h"

#include <gtest/gtest.h>

namespace tandrel::PaymentGuard {
namespace {

TEST(FoldedText, WhatLooksAlikeFoldsAlike) {
    struct Row {
        const char* written;
        const char* meant;
    };
    for (const Row& row : {
             Row{"PAY NOW", "pay now"}, Row{"Ｐａｙ　ｎｏｗ", "pay now"},  // full-width forms
             Row{"Pаy nоw", "pay now"},                                    // Cyrillic а and о
             Row{"C0nfirm", "Confirm"},                                    // a digit for a letter
             Row{"Confirrn", "Confirm"},                                   // rn for m
             Row{"Jetzt bezahlen\u00ad!", "jetzt bezahlen"},               // a soft hyphen
             Row{"Überweisen", "U\u0308berweisen"},  // composed and decomposed
             Row{"confirmer", "CONFIRMER"},          //
             Row{"ｶｰﾄﾞ", "カード"},                  // half-width kana
             Row{"تأكيد الدَّفع", "تأكيد الدفع"},      // vowel signs
             Row{"pay\u00a0now", "pay now"},         // a no-break space
             Row{"Pay — now…", "pay now"},           // marks between words
         }) {
        EXPECT_EQ(folded(row.written), folded(row.meant)) << row.written;
        EXPECT_FALSE(folded(row.written).empty()) << row.written;
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
    struct Row {
        const char* written;
        const char* spelled;
    };
    for (const Row& row : {
             Row{"Pаy nоw", "pay now"},
             Row{"C0nfirm", "confirm"},
             Row{"5ubscribe", "subscribe"},
             Row{"Βuy nοw", "Buy now"},        // a Greek capital, and a small letter
             Row{"Оплатить", "Оплатить"},      // Russian, and it looks it
             Row{"Pay 10 now", "Pay 10 now"},  // a number of its own
             Row{"Πληρωμή", "Πληρωμή"},        // Greek
             Row{"Total €5.00", "Total €5.00"},
         }) {
        EXPECT_EQ(unmasked(row.written), row.spelled);
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
