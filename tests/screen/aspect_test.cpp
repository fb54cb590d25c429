#include "screen/aspect.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(ParseAspect, ReadsOneNumberOrTwo) {
    const struct {
        std::optional<std::string_view> text;
        std::optional<double> aspect;
    } rows[] = {
        {"9/19.5", 9 / 19.5},
        {"19.5/9", 9 / 19.5},
        {"9//19.5", 9 / 19.5},
        {"/9/19.5/", 9 / 19.5},
        {"0.4615", 0.4615},
        {"2", 0.5},
        {"1", 1.0},
        {"+2", 0.5},
        {"1e1/2e1", 0.5},
        {std::nullopt, std::nullopt},
        {"", std::nullopt},
        {"/", std::nullopt},
        {"0", std::nullopt},
        {"-2", std::nullopt},
        {"1/0", std::nullopt},
        {"-1/-2", std::nullopt},
        {"a/b", std::nullopt},
        {"1/b", std::nullopt},
        {"1/2/3", std::nullopt},
        {" 1/2", std::nullopt},
        {"1.5x", std::nullopt},
        {"0x10", std::nullopt},
        {"+-2", std::nullopt},
        {"nan", std::nullopt},
        {"inf", std::nullopt},
        {"1/inf", std::nullopt},
        {"1e999", std::nullopt},
        {"1e-300/1e300", std::nullopt},
    };
    for (const auto& row : rows)
        EXPECT_EQ(parseAspect(row.text), row.aspect) << row.text.value_or("none");
}

}  // namespace
}  // namespace tandrel
