#include "reading/text_marks.h"

#include <ostream>

#include <gtest/gtest.h>

#include "reading/drawn_frame.h"
#include "reading/ink_check.h"
#include "reading/line_finder.h"

namespace tandrel {
namespace {

Strip drawnStrip(const char* text) {
    DrawnFrame frame(1179, 180, 3, kWhite);
    frame.text(20, 40, text);
    const GrayFrame gray = GrayFrame::from(frame.frame());
    return makeStrip(gray, findLines(gray).at(0).ink, 0.15);
}

struct MarksCase {
    const char* ink;
    const char* text;
    bool contradicts;
};
void PrintTo(const MarksCase& row, std::ostream* out) { *out << row.ink << " as " << row.text; }

class CountsPoints : public testing::TestWithParam<MarksCase> {};

TEST_P(CountsPoints, onTheStrip) {
    EXPECT_EQ(contradictsInk(drawnStrip(GetParam().ink), GetParam().text), GetParam().contradicts);
}

INSTANTIATE_TEST_SUITE_P(TextMarks, CountsPoints,
                         testing::ValuesIn(std::initializer_list<MarksCase>{
                             {"€1.18", "€1.18", false},
                             {"€1.18", "€118", true},
                             {"€118", "€1.18", true},
                             {"$1,250.00", "$1,250.00", false},
                             {"$1,250.00", "$1250.00", true},
                             {"Total: 9,55 €", "Total: 9,55 €", false},
                             {"Total: 9,55 €", "Total: 955 €", true},
                             {"12:30", "12:30", false},
                             {"fiji 20", "fiji 20", false},
                         }));

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
