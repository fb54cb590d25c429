#include "base/json.h"

#include <cmath>

#include <gmock/gmock.h>

namespace tandrel {
namespace {

std::string nested(int levels) {
    const auto count = static_cast<std::size_t>(levels);
    return std::string(count, '[') + std::string(count, ']');
}

TEST(Json, WhatIsNotOneValueIsAnError) {
    const std::pair<const char*, std::string> rows[] = {
        {"empty", ""},
        {"white space", " \n"},
        {"two values", "1 2"},
        {"cut short", R"({"a": [1, )"},
        {"not UTF-8", "\"\xff\""},
        {"number beyond all", "1e999"},
        {"65 levels", nested(65)},
        {"a million levels", std::string(1'000'000, '[')},
    };
    for (const auto& [name, text] : rows) EXPECT_FALSE(parseJson(text)) << name;
}

TEST(Json, DepthCountsBracketsOutsideOfTexts) {
    EXPECT_TRUE(parseJson(nested(64)));
    EXPECT_TRUE(parseJson("\"" + std::string(100, '[') + "\""));
    EXPECT_TRUE(parseJson(R"(["\"[[", ")" + std::string(100, '{') + R"("])"));
    EXPECT_THAT(parseJson(nested(65)).error().message, testing::HasSubstr("64 levels"));
}

TEST(Json, WritesWhatEveryReaderUnderstands) {
    EXPECT_EQ(dumpJson({{"b", 1}, {"a", "\u00E9\n"}}), "{\"a\":\"\u00E9\\n\",\"b\":1}");
    EXPECT_EQ(dumpJson("a\xff"), "\"a\uFFFD\"");
    EXPECT_EQ(dumpJson({NAN, INFINITY, 0.5}), "[null,null,0.5]");
}

TEST(Json, MembersOfAnotherTypeAreAbsent) {
    const Json object = {{"text", "a"}, {"number", 1.5}, {"flag", true}, {"none", nullptr}};
    EXPECT_EQ(textMember(object, "text"), "a");
    EXPECT_EQ(numberMember(object, "number"), 1.5);
    EXPECT_EQ(boolMember(object, "flag"), true);
    for (const char* key : {"text", "number", "flag", "none", "missing"}) {
        const int found = textMember(object, key).has_value() +
                          boolMember(object, key).has_value() +
                          numberMember(object, key).has_value();
        EXPECT_EQ(found, key[0] == 'n' && key[1] == 'o' ? 0 : key[0] == 'm' ? 0 : 1) << key;
    }
    EXPECT_FALSE(textMember(Json::array({1}), "text"));
    EXPECT_FALSE(textMember("text", "text"));
}

}  // namespace
}  // namespace tandrel
