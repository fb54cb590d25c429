#include "base/keyword_search.h"

#include <gtest/gtest.h>

#include "base/ascii.h"

namespace tandrel {
namespace {

// Keywords within and over one another, so that a wrong fallback loses one.
const KeywordSearch::Keyword kKeywords[] = {
    {"he", 1},      {"she", 2}, {"his", 4},   {"hers", 8},   {"s", 16},
    {"ERSATZ", 32}, {"€", 64},  {"aab", 128}, {"aaab", 256}, {"sh", 512},
};

std::uint64_t oneByOne(const std::string& text) {
    std::uint64_t marks = 0;
    for (const auto& keyword : kKeywords) {
        if (asciiLowered(text).contains(asciiLowered(keyword.text))) marks |= keyword.marks;
    }
    return marks;
}

TEST(KeywordSearch, FindsEveryKeywordThatStandsInTheText) {
    const KeywordSearch search(kKeywords);
    std::string text;
    const std::string_view letters = "hesirzatb";
    for (int number = 0; number < 60'000; ++number) {
        text.clear();
        for (int rest = number; rest > 0; rest /= 9)
            text += letters[static_cast<std::size_t>(rest % 9)];
        ASSERT_EQ(search.marksOf(text), oneByOne(text)) << text;
    }
    for (const char* other : {"", "USHERS", "ersatz", "5 € ohne", "\xE2\x82", "aaaab", "ErSaTZhis"})
        EXPECT_EQ(search.marksOf(other), oneByOne(other)) << other;
    EXPECT_EQ(KeywordSearch({}).marksOf("anything"), 0U);
}

TEST(KeywordSearch, TellsWhereTheFirstAndTheLastEnd) {
    const KeywordSearch search(kKeywords);
    EXPECT_FALSE(search.find("ushers", 128));
    const auto span = search.find("ushers, she", 1 | 2).value();
    EXPECT_EQ(span.firstEnd, 4U);
    EXPECT_EQ(span.lastEnd, 11U);
}

}  // namespace
}  // namespace tandrel
