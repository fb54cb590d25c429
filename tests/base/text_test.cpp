#include <gmock/gmock.h>

#include "base/base64.h"
#include "base/regex.h"
#include "base/unicode.h"
#include "base/uuid.h"

namespace tandrel {
namespace {

using testing::ElementsAre;

TEST(Unicode, GraphemesArePerceivedCharacters) {
    EXPECT_THAT(graphemes("ab"), ElementsAre("a", "b"));
    EXPECT_THAT(graphemes("e\u0301a"), ElementsAre("e\u0301", "a"));
    EXPECT_THAT(graphemes("\r\n\n"), ElementsAre("\r\n", "\n"));
    EXPECT_THAT(graphemes("👨‍👩‍👧x"), ElementsAre("👨‍👩‍👧", "x"));
    EXPECT_THAT(graphemes("🇩🇪🇫🇷"), ElementsAre("🇩🇪", "🇫🇷"));
    EXPECT_THAT(graphemes("a\xff"), ElementsAre("a", "\uFFFD"));
    EXPECT_THAT(graphemes(""), ElementsAre());
    EXPECT_EQ(graphemeCount("e\u0301👍🏽"), 2U);
    EXPECT_EQ(firstGraphemes("e\u0301👍🏽z", 2), "e\u0301👍🏽");
    EXPECT_EQ(firstGraphemes("ab", 0), "");
    EXPECT_EQ(firstGraphemes("ab", 9), "ab");
}

TEST(Unicode, FormsAndCases) {
    EXPECT_EQ(composed("e\u0301"), "\u00E9");
    EXPECT_EQ(composed("\u212B"), "\u00C5") << "the angstrom sign is the letter";
    EXPECT_EQ(lowerCased("ÄΑΣ I"), "äας i");
    EXPECT_EQ(trimmed("\u00A0\u3000\n a b\t\u2028"), "a b");
    EXPECT_EQ(trimmed("\u200Ba"), "\u200Ba") << "a zero-width space is not white space";
    EXPECT_EQ(trimmed(" \n"), "");
}

TEST(Unicode, ValidUtf8) {
    const std::tuple<const char*, std::string, bool> rows[] = {
        {"empty", "", true},
        {"zero byte", std::string("\0", 1), true},
        {"largest", "\xF4\x8F\xBF\xBF", true},
        {"beyond the largest", "\xF4\x90\x80\x80", false},
        {"surrogate", "\xED\xA0\x80", false},
        {"overlong", "\xC0\x80", false},
        {"cut short", "a\xE2\x82", false},
        {"stray continuation", "\x80", false},
    };
    for (const auto& [name, text, valid] : rows) EXPECT_EQ(isUtf8(text), valid) << name;
}

TEST(Regex, PlacesAreBytesOfTheText) {
    const Regex price("[0-9]+ ?€", Regex::Case::sensitive);
    const auto match = price.firstMatch("Größe 🙂: 25 € netto").value();
    EXPECT_EQ(match.text, "25 €");
    EXPECT_EQ(match.start, 14U);
    EXPECT_EQ(match.end, 20U);
}

TEST(Regex, PlacesStayInsideATextThatIsNotUtf8) {
    const Regex digits("[0-9]+", Regex::Case::sensitive);
    const auto match = digits.firstMatch("\xff\xfe 12\xe2\x82").value();
    EXPECT_EQ(match.start, 3U);
    EXPECT_EQ(match.end, 5U);
}

TEST(Regex, FindsAndReplaces) {
    const Regex words("(b)?(a)", Regex::Case::insensitive);
    EXPECT_THAT(words.all("xBA a"), ElementsAre("BA", "a"));
    EXPECT_THAT(words.all("xBA a", 1), ElementsAre("B")) << "matches without the group are skipped";
    EXPECT_THAT(words.all("xBA a", 7), ElementsAre());
    EXPECT_EQ(words.replaceAll("xBA a", "$1"), "x$1 $1");
    EXPECT_EQ(Regex("", Regex::Case::sensitive).replaceAll("ab", "-"), "-a-b-");
    EXPECT_FALSE(words.first("xyz"));
    EXPECT_FALSE(Regex("b", Regex::Case::sensitive).has("B"));
}

TEST(Regex, APatternThatRunsAwayIsNoMatch) {
    const Regex runaway("(a+)+$", Regex::Case::sensitive);
    EXPECT_FALSE(runaway.has(std::string(60, 'a') + "b"));
    const Regex deep("(a|b)*c", Regex::Case::sensitive);
    EXPECT_FALSE(deep.has(std::string(5'000'000, 'a')));
}

TEST(Uuid, ReadsOnlyItsOwnForm) {
    const auto uuid = Uuid::parse("12345678-9abc-DEF0-1234-56789abcdef0").value();
    EXPECT_EQ(uuid.text(), "12345678-9ABC-DEF0-1234-56789ABCDEF0");
    EXPECT_EQ(uuid.bytes()[0], 0x12);
    EXPECT_EQ(uuid.bytes()[15], 0xF0);
    for (const char* other :
         {"", "12345678-9abc-def0-1234-56789abcdef", "12345678-9abc-def0-1234-56789abcdef00",
          "123456789-abc-def0-1234-56789abcdef0", "{2345678-9abc-def0-1234-56789abcde}",
          "12345678-9abc-def0-1234-56789abcdefg", "123456789abcdef0123456789abcdef0"}) {
        EXPECT_FALSE(Uuid::parse(other)) << other;
    }
}

// RFC 4648, section 10.
TEST(Base64, TestVectors) {
    EXPECT_EQ(base64(toBytes("")), "");
    EXPECT_EQ(base64(toBytes("f")), "Zg==");
    EXPECT_EQ(base64(toBytes("fo")), "Zm8=");
    EXPECT_EQ(base64(toBytes("foo")), "Zm9v");
    EXPECT_EQ(base64(toBytes("foobar")), "Zm9vYmFy");
    EXPECT_EQ(base64({0xFB, 0xFF}), "+/8=");
}

}  // namespace
}  // namespace tandrel
