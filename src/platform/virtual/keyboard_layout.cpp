#include "platform/virtual/keyboard_layout.h"

#include <iterator>
#include <span>

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
constexpr KeyTexts kRussian[] = {
    {"ф", "Ф"}, {"и", "И"}, {"с", "С"}, {"в", "В"}, {"у", "У"}, {"а", "А"}, {"п", "П"},
    {"р", "Р"}, {"ш", "Ш"}, {"о", "О"}, {"л", "Л"}, {"д", "Д"}, {"ь", "Ь"}, {"т", "Т"},
    {"щ", "Щ"}, {"з", "З"}, {"й", "Й"}, {"к", "К"}, {"ы", "Ы"}, {"е", "Е"}, {"г", "Г"},
    {"м", "М"}, {"ц", "Ц"}, {"ч", "Ч"}, {"н", "Н"}, {"я", "Я"},
    {"1", "!"}, {"2", "\""}, {"3", "№"}, {"4", "%"}, {"5", ":"},
    {"6", ","}, {"7", "."}, {"8", ";"}, {"9", "("}, {"0", ")"},
    {"\n", "\n"}, {"", ""}, {"", ""}, {"\t", "\t"}, {" ", " "},
    {"-", "_"}, {"=", "+"}, {"х", "Х"}, {"ъ", "Ъ"}, {"ё", "Ё"}, {"ё", "Ё"},
    {"ж", "Ж"}, {"э", "Э"}, {"]", "["}, {"б", "Б"}, {"ю", "Ю"}, {"/", "?"},
};
// clang-format on
static_assert(std::size(kUs) == 0x38 - kFirstKey + 1);
static_assert(std::size(kGerman) == std::size(kUs));
static_assert(std::size(kRussian) == std::size(kUs));

std::span<const KeyTexts, std::size(kUs)> keysOf(KeyboardLayout layout) {
    switch (layout) {
        case KeyboardLayout::us:
            return kUs;
        case KeyboardLayout::german:
            return kGerman;
        case KeyboardLayout::russian:
            return kRussian;
    }
    return kUs;
}

}  // namespace

std::string_view keyText(KeyboardLayout layout, std::uint16_t usage, Shift shift) {
    if (usage < kFirstKey || usage >= kFirstKey + std::size(kUs)) return {};
    const KeyTexts& texts = keysOf(layout)[usage - kFirstKey];
    return shift == Shift::down ? texts.shifted : texts.plain;
}

}  // namespace tandrel
