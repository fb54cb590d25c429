#include "helper/line_reader.h"

#include <vector>

#include <gtest/gtest.h>

namespace tandrel {
namespace {

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

TEST(LineReader, CutsWhereverThePiecesEndAndTellsOfAnOverlongLineOnce) {
    const std::pair<std::vector<std::string>, std::vector<std::string>> rows[] = {
        {{"a", "\n", "b", "c", "\n"}, {"a", "bc"}},
        {{"a\r", "\nb"}, {"a", "b"}},
        {{"a\rb\n"}, {"a\rb"}},
        {{std::string("a\0b\n", 4)}, {std::string("a\0b", 3)}},
        {{"\n\r\n \t\n"}, {}},
        {{"12345678\n"}, {"12345678"}},
        {{"1234", "56789", "0123456789", "\nab"}, {"!", "ab"}},
        {{"123456789"}, {"!"}},
    };
    for (const auto& [pieces, lines] : rows) EXPECT_EQ(linesOf(pieces), lines);
}

}  // namespace
}  // namespace tandrel
