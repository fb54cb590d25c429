#include "screen/aspect.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(ParseAspect, ReadsOneNumberOrTwo) {
    const std::pair<const char*, double> rows[] = {
        {"9/19.5", 9 / 19.5},
        {"19.5/9", 9 / 19.5},
        {"9//19.5", 9 / 19.5},
        {"/9/19.5/", 9 / 19.5},
        {"0.4615", 0.4615},
        {"2", 0.5},
        {"1", 1.0},
        {"+2", 0.5},
        {"1e1/2e1", 0.5},
    };
    for (const auto& [text, aspect] : rows) EXPECT_EQ(parseAspect(text), aspect) << text;
    EXPECT_EQ(parseAspect(std::nullopt), std::nullopt);
    for (const char* text :
         {"", "/", "0", "-2", "1/0", "-1/-2", "a/b", "1/b", "1/2/3", " 1/2", "1.5x", "0x10", "+-2",
          "nan", "inf", "1/inf", "1e999", "1e-300/1e300"}) {
        EXPECT_EQ(parseAspect(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace tandrel
