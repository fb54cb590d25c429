#include "hid/keymap.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(Keymap, TypesWhatAUsKeyboardHas) {
    // Keys side by side, from the usage of the first: what they make without and with Shift.
    const std::tuple<std::uint8_t, std::string_view, std::string_view> rows[] = {
        {0x04, "abcdefghijklmnopqrstuvwxyz", "ABCDEFGHIJKLMNOPQRSTUVWXYZ"},
        {0x1E, "1234567890\n", "!@#$%^&*()"},
        {0x2B, "\t -=[]\\", "\0\0_+{}|"},
        {0x33, ";'`,./", ":\"~<>?"},
    };
    for (const auto& [first, plain, shifted] : rows) {
        const auto expectStroke = [&](std::string_view keys, std::size_t i,
                                      std::uint8_t modifiers) {
            if (i >= keys.size() || keys[i] == '\0') return;
            const Keymap::Stroke expected = {.code = static_cast<std::uint8_t>(first + i),
                                             .modifiers = modifiers};
            EXPECT_EQ(Keymap::stroke(keys.substr(i, 1)), expected) << keys[i];
        };
        for (std::size_t i = 0; i < plain.size(); ++i) {
            expectStroke(plain, i, 0);
            expectStroke(shifted, i, 2);
        }
    }
    for (const auto& [form, character] :
         {std::pair("\u212A", "K"), {"\u037E", ";"}, {"\u1FEF", "`"}})
        EXPECT_EQ(Keymap::stroke(form), Keymap::stroke(character)) << "the same canonically";
}

TEST(Keymap, HasNoStrokeForTheRest) {
    for (const std::string_view row : {"é", "e\u0301", "q\u0301", "€", "\r", "\r\n", "😀", "", "ab",
                                       "\x1B", "\x7F", "\x80", "\xFF", "\u00A0", "¡", "ａ"}) {
        EXPECT_EQ(Keymap::stroke(row), std::nullopt) << row;
    }
    EXPECT_EQ(Keymap::stroke(std::string_view("\0", 1)), std::nullopt);
}

TEST(Keymap, NamesKeysAndModifiers) {
    const std::pair<const char*, int> keys[] = {
        {"enter", 0x28},     {"return", 0x28}, {"escape", 0x29},        {"esc", 0x29},
        {"backspace", 0x2A}, {"delete", 0x2A}, {"tab", 0x2B},           {"space", 0x2C},
        {"right", 0x4F},     {"left", 0x50},   {"down", 0x51},          {"up", 0x52},
        {"home", 0x4A},      {"end", 0x4D},    {"forwarddelete", 0x4C}, {"pageup", 0x4B},
        {"pagedown", 0x4E},
    };
    EXPECT_EQ(Keymap::named.size(), std::size(keys));
    for (const auto& [name, usage] : keys) EXPECT_EQ(Keymap::find(Keymap::named, name), usage);
    EXPECT_EQ(Keymap::find(Keymap::named, "Home"), std::nullopt);

    const std::pair<const char*, int> modifiers[] = {{"ctrl", 1},   {"control", 1}, {"shift", 2},
                                                     {"alt", 4},    {"option", 4},  {"cmd", 8},
                                                     {"command", 8}};
    EXPECT_EQ(Keymap::modifiers.size(), std::size(modifiers));
    for (const auto& [name, bit] : modifiers) {
        EXPECT_EQ(Keymap::find(Keymap::modifiers, name), bit);
    }
}

}  // namespace
}  // namespace tandrel
