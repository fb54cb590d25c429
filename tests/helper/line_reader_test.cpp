#include "helper/line_reader.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tandrel {
namespace {

using testing::ElementsAre;

// The lines of the pieces, a line that is too long as "!".
std::vector<std::string> linesOf(const std::vector<std::string>& pieces) {
    std::vector<std::string> lines;
    LineReader reader(
        [&](LineReader::Kind kind, std::string_view line) {
            lines.emplace_back(kind == LineReader::Kind::tooLong ? "!" : line);
        },
        8);
    for (const std::string& piece : pieces) reader.append(piece);
    reader.finish();
    return lines;
}

TEST(LineReader, CutsWhereverThePiecesEnd) {
    EXPECT_THAT(linesOf({"a\nbc\n"}), ElementsAre("a", "bc"));
    EXPECT_THAT(linesOf({"a", "\n", "b", "c", "\n"}), ElementsAre("a", "bc"));
    EXPECT_THAT(linesOf({"a\r", "\nb"}), ElementsAre("a", "b"));
    EXPECT_THAT(linesOf({"a\rb\n"}), ElementsAre("a\rb"));
    EXPECT_THAT(linesOf({std::string("a\0b\n", 4)}), ElementsAre(std::string("a\0b", 3)));
}

TEST(LineReader, PassesOverBlankLines) {
    EXPECT_THAT(linesOf({"\n\r\n \t\n"}), ElementsAre());
    EXPECT_THAT(linesOf({}), ElementsAre());
}

TEST(LineReader, TellsOfAnOverlongLineOnceAndGoesOn) {
    EXPECT_THAT(linesOf({"12345678\n"}), ElementsAre("12345678"));
    EXPECT_THAT(linesOf({"123456789\nab\n"}), ElementsAre("!", "ab"));
    EXPECT_THAT(linesOf({"1234", "56789", "0123456789", "\nab"}), ElementsAre("!", "ab"));
    EXPECT_THAT(linesOf({"123456789"}), ElementsAre("!"));
}

}  // namespace
}  // namespace tandrel
