#include "platform/virtual/keyboard_layout.h"

#include <iterator>

namespace tandrel {
namespace {

struct KeyTexts {
    std::string_view plain;
    std::string_view shifted;
};

constexpr std::uint16_t kFirstKey = 0x04;

// From usage 0x04 on. The German rows leave out dead keys and what needs Option.
// clang-format off
constexpr KeyTexts kUs[] = {
    {"a", "A"}, {"b", "B"}, {"c", "C"}, {"d", "D"}, {"e", "E"}, {"f", "F"}, {"g", "G"},
    {"h", "H"}, {"i", "I"}, {"j", "J"}, {"k", "K"}, {"l", "L"}, {"m", "M"}, {"n", "N"},
    {"o", "O"}, {"p", "P"}, {"q", "Q"}, {"r", "R"}, {"s", "S"}, {"t", "T"}, {"u", "U"},
    {"v", "V"}, {"w", "W"}, {"x", "X"}, {"y", "Y"}, {"z", "Z"},
    {"1", "!"}, {"2", "@"}, {"3", "#"}, {"4", "$"}, {"5", "%"},
    {"6", "^"}, {"7", "&"}, {"8", "*"}, {"9", "("}, {"0", ")"},
    {"\n", "\n"}, {"", ""}, {"", ""}, {"\t", "\t"}, {" ", " "},
    {"-", "_"}, {"=", "+"}, {"[", "{"}, {"]", "}"}, {"\\", "|"}, {"#", "~"},
    {";", ":"}, {"'", "\""}, {"`", "~"}, {",", "<"}, {".", ">"}, {"/", "?"},
};
constexpr KeyTexts kGerman[] = {
    {"a", "A"}, {"b", "B"}, {"c", "C"}, {"d", "D"}, {"e", "E"}, {"f", "F"}, {"g", "G"},
    {"h", "H"}, {"i", "I"}, {"j", "J"}, {"k", "K"}, {"l", "L"}, {"m", "M"}, {"n", "N"},
    {"o", "O"}, {"p", "P"}, {"q", "Q"}, {"r", "R"}, {"s", "S"}, {"t", "T"}, {"u", "U"},
    {"v", "V"}, {"w", "W"}, {"x", "X"}, {"z", "Z"}, {"y", "Y"},
    {"1", "!"}, {"2", "\""}, {"3", "§"}, {"4", "$"}, {"5", "%"},
    {"6", "&"}, {"7", "/"}, {"8", "("}, {"9", ")"}, {"0", "="},
    {"\n", "\n"}, {"", ""}, {"", ""}, {"\t", "\t"}, {" ", " "},
    {"ß", "?"}, {"", ""}, {"ü", "Ü"}, {"+", "*"}, {"#", "'"}, {"#", "'"},
    {"ö", "Ö"}, {"ä", "Ä"}, {"<", ">"}, {",", ";"}, {".", ":"}, {"-", "_"},
};
// clang-format on
static_assert(std::size(kUs) == 0x38 - kFirstKey + 1);
static_assert(std::size(kGerman) == std::size(kUs));

}  // namespace

std::string_view keyText(KeyboardLayout layout, std::uint16_t usage, Shift shift) {
    if (usage < kFirstKey || usage >= kFirstKey + std::size(kUs)) return {};
    const auto& keys = layout == KeyboardLayout::german ? kGerman : kUs;
    const KeyTexts& texts = keys[usage - kFirstKey];
    return shift == Shift::down ? texts.shifted : texts.plain;
}

}  // namespace tandrel
