#include "reading/text_marks.h"

#include <ostream>

#include <gtest/gtest.h>

namespace tandrel {
namespace {

struct EndsCase {
    const char* read;
    const char* kept;
};
void PrintTo(const EndsCase& row, std::ostream* out) { *out << row.read; }

class StripsMarks : public testing::TestWithParam<EndsCase> {};

TEST_P(StripsMarks, atTheEnds) { EXPECT_EQ(withoutMarks(GetParam().read), GetParam().kept); }

INSTANTIATE_TEST_SUITE_P(TextMarks, StripsMarks,
                         testing::ValuesIn(std::initializer_list<EndsCase>{
                             {"Payment methods >", "Payment methods"},
                             {"< Back", "Back"},
                             {">", ""},
                             {"——", ""},
                             {"©", ""},
                             {"5 > 3", "5 > 3"},
                             {"-€5.00", "-€5.00"},
                             {"7", "7"},
                         }));

TEST(TextMarks, anAmountHasASignOrDecimals) {
    for (const char* amount : {"€5", "$1,250", "12.50", "9,99 each", "5 £"}) {
        EXPECT_TRUE(holdsAmount(amount)) << amount;
    }
    for (const char* other : {"9:41", "12", "iOS 17.2", "$", "1.5 km"}) {
        EXPECT_FALSE(holdsAmount(other)) << other;
    }
}

TEST(TextMarks, anSBeforeAnAmountMayBeADollarSign) {
    EXPECT_TRUE(mayMisspellAmount("S77.11"));
    EXPECT_TRUE(mayMisspellAmount("Total S1,250"));
    EXPECT_TRUE(mayMisspellAmount("O.55 €"));
    EXPECT_TRUE(mayMisspellAmount("B,13 €"));
    EXPECT_TRUE(mayMisspellAmount("B97.59 €"));
    EXPECT_TRUE(mayMisspellAmount("-$48, 437.75"));
    EXPECT_FALSE(mayMisspellAmount("R97.59")) << "rand";
    EXPECT_FALSE(mayMisspellAmount("Rooms 48, 51 and 7"));
    EXPECT_FALSE(mayMisspellAmount("Model S22"));
    EXPECT_FALSE(mayMisspellAmount("iOS 17.2, build 4"));
    EXPECT_FALSE(mayMisspellAmount("$77.11"));
}

}  // namespace
}  // namespace tandrel
