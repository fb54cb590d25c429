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

TEST(TextMarks, anSBeforeAnAmountMayBeADollarSign) {
    EXPECT_TRUE(mayMisspellSign("S77.11"));
    EXPECT_TRUE(mayMisspellSign("Total S1,250"));
    EXPECT_FALSE(mayMisspellSign("Model S22"));
    EXPECT_FALSE(mayMisspellSign("$77.11"));
}

}  // namespace
}  // namespace tandrel
