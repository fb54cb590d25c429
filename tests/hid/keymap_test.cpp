#include "hid/keymap.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(Keymap, TypesWhatAUsKeyboardHas) {
    const struct {
        const char* character;
        std::uint8_t code;
        std::uint8_t modifiers;
    } rows[] = {
        {"a", 0x04, 0},
        {"z", 0x1D, 0},
        {"A", 0x04, 2},
        {"Z", 0x1D, 2},
        {"1", 0x1E, 0},
        {"9", 0x26, 0},
        {"0", 0x27, 0},
        {"\n", 0x28, 0},
        {"\t", 0x2B, 0},
        {" ", 0x2C, 0},
        {"-", 0x2D, 0},
        {"=", 0x2E, 0},
        {"[", 0x2F, 0},
        {"]", 0x30, 0},
        {"\\", 0x31, 0},
        {";", 0x33, 0},
        {"'", 0x34, 0},
        {"`", 0x35, 0},
        {",", 0x36, 0},
        {".", 0x37, 0},
        {"/", 0x38, 0},
        {"!", 0x1E, 2},
        {"@", 0x1F, 2},
        {"#", 0x20, 2},
        {"$", 0x21, 2},
        {"%", 0x22, 2},
        {"^", 0x23, 2},
        {"&", 0x24, 2},
        {"*", 0x25, 2},
        {"(", 0x26, 2},
        {")", 0x27, 2},
        {"_", 0x2D, 2},
        {"+", 0x2E, 2},
        {"{", 0x2F, 2},
        {"}", 0x30, 2},
        {"|", 0x31, 2},
        {":", 0x33, 2},
        {"\"", 0x34, 2},
        {"~", 0x35, 2},
        {"<", 0x36, 2},
        {">", 0x37, 2},
        {"?", 0x38, 2},
        // Canonically equal to K, ; and `.
        {"\u212A", 0x0E, 2},
        {"\u037E", 0x33, 0},
        {"\u1FEF", 0x35, 0},
    };
    for (const auto& row : rows) {
        const Keymap::Stroke expected = {.code = row.code, .modifiers = row.modifiers};
        EXPECT_EQ(Keymap::stroke(row.character), expected) << row.character;
    }
}

TEST(Keymap, HasNoStrokeForTheRest) {
    const std::string_view rows[] = {
        "é",
        "e\u0301",
        "a\u0308",
        "q\u0301",
        "£",
        "€",
        "\r",
        "\r\n",
        "😀",
        "",
        "ab",
        "\x1B",
        "\x7F",
        "\x80",
        "\xFF",
        "\u00A0",
        "¡",
        "ａ",
        std::string_view("\0", 1),
    };
    for (const auto row : rows) EXPECT_EQ(Keymap::stroke(row), std::nullopt) << row;
}

TEST(Keymap, NamesKeysAndModifiers) {
    const struct {
        const char* name;
        int usage;
    } keys[] = {
        {"enter", 0x28},     {"return", 0x28}, {"escape", 0x29},        {"esc", 0x29},
        {"backspace", 0x2A}, {"delete", 0x2A}, {"tab", 0x2B},           {"space", 0x2C},
        {"right", 0x4F},     {"left", 0x50},   {"down", 0x51},          {"up", 0x52},
        {"home", 0x4A},      {"end", 0x4D},    {"forwarddelete", 0x4C}, {"pageup", 0x4B},
        {"pagedown", 0x4E},
    };
    EXPECT_EQ(Keymap::named.size(), std::size(keys));
    for (const auto& key : keys) EXPECT_EQ(Keymap::find(Keymap::named, key.name), key.usage);
    EXPECT_EQ(Keymap::find(Keymap::named, "Home"), std::nullopt);

    const struct {
        const char* name;
        int bit;
    } modifiers[] = {{"ctrl", 1},   {"control", 1}, {"shift", 2},  {"alt", 4},
                     {"option", 4}, {"cmd", 8},     {"command", 8}};
    EXPECT_EQ(Keymap::modifiers.size(), std::size(modifiers));
    for (const auto& one : modifiers) EXPECT_EQ(Keymap::find(Keymap::modifiers, one.name), one.bit);
}

}  // namespace
}  // namespace tandrel
