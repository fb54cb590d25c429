#include "reading/text_marks.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(TextMarks, areStrippedAtTheEnds) {
    const std::pair<const char*, const char*> rows[] = {
        {"Payment methods >", "Payment methods"},
        {"< Back", "Back"},
        {">", ""},
        {"——", ""},
        {"©", ""},
        {"5 > 3", "5 > 3"},
        {"-€5.00", "-€5.00"},
        {"7", "7"},
    };
    for (const auto& [read, kept] : rows) EXPECT_EQ(withoutMarks(read), kept);
}

TEST(TextMarks, anAmountHasASignOrDecimals) {
    for (const char* amount : {"€5", "$1,250", "12.50", "9,99 each", "5 £"}) {
        EXPECT_TRUE(holdsAmount(amount)) << amount;
    }
    for (const char* other : {"9:41", "12", "iOS 17.2", "$", "1.5 km"}) {
        EXPECT_FALSE(holdsAmount(other)) << other;
    }
}

TEST(TextMarks, anSBeforeAnAmountMayBeADollarSign) {
    for (const char* amount :
         {"S77.11", "Total S1,250", "O.55 €", "B,13 €", "B97.59 €", "-$48, 437.75"}) {
        EXPECT_TRUE(mayMisspellAmount(amount)) << amount;
    }
    // The first is of rand.
    for (const char* other :
         {"R97.59", "Rooms 48, 51 and 7", "Model S22", "iOS 17.2, build 4", "$77.11"}) {
        EXPECT_FALSE(mayMisspellAmount(other)) << other;
    }
}

}  // namespace
}  // namespace tandrel
