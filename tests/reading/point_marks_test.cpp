#include "reading/point_marks.h"

#include <gtest/gtest.h>

#include "reading/drawn_frame.h"
#include "reading/line_finder.h"

namespace tandrel {
namespace {

Strip stripOf(const std::string& words, const char* font) {
    DrawnFrame frame(1200, 150, 3, kWhite);
    frame.text(20, 35, words, {.font = font, .points = 17});
    const GrayFrame gray = GrayFrame::from(frame.frame());
    const auto lines = findLines(gray);
    return makeStrip(gray, lines.at(0).ink, 0.15);
}

// What is drawn, what was read, and what becomes of that.
const std::tuple<const char*, const char*, PointMarks, const char*> kMarks[] = {
    {"4.45 €", "4.45 €", PointMarks::kSame, "4.45 €"},
    {"4,45 €", "445 €", PointMarks::kCorrected, "4,45 €"},
    {"4.45 €", "4,45 €", PointMarks::kCorrected, "4.45 €"},
    {"1,174", "1.174", PointMarks::kCorrected, "1,174"},
    {"$1.18", "$118", PointMarks::kCorrected, "$1.18"},
    {"118", "1.18", PointMarks::kCorrected, "118"},
    {"€118", "€1.18", PointMarks::kCorrected, "€118"},
    {"$1,250.00", "$1,250.00", PointMarks::kSame, "$1,250.00"},
    {"Total: 9,55 €", "Total: 955 €", PointMarks::kCorrected, "Total: 9,55 €"},
    {"fiji 20", "fiji 20", PointMarks::kSame, "fiji 20"},
    {".?123", ".2123", PointMarks::kCorrected, ".?123"},
    {"12:30", "12:30", PointMarks::kSame, "12:30"},
    {"May 27, 2018.", "May 27, 2018.", PointMarks::kSame, "May 27, 2018."},
    // With a letter too few nobody knows where the point belongs.
    {"3,445 €", "345 €", PointMarks::kUnlike, "345 €"},
};

TEST(PointMarks, areCheckedAgainstTheInk) {
    for (const char* font : {"Inter", "Inter Semi-Bold", "DejaVu Sans"}) {
        for (const auto& [drawn, read, marks, text] : kMarks) {
            SCOPED_TRACE(testing::Message() << drawn << " read as " << read << " in " << font);
            const PointCheck check = checkPoints(stripOf(drawn, font), read);
            EXPECT_EQ(check.marks, marks);
            EXPECT_EQ(check.text, text);
        }
    }
}

}  // namespace
}  // namespace tandrel
