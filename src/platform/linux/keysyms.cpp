#include "platform/linux/keysyms.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <string>

#include <unicode/utf8.h>

#include "base/unicode.h"

namespace tandrel {
namespace {

struct NamedKey {
    std::string_view name;
    std::uint32_t keysym;
};

// clang-format off
constexpr NamedKey kKeys[] = {
    {"return",    0xff0d}, {"enter",  0xff0d},
    {"tab",       0xff09},
    {"space",     0x0020},
    {"delete",    0xff08}, {"backspace", 0xff08},
    {"forwarddelete", 0xffff},
    {"escape",    0xff1b}, {"esc",    0xff1b},
    {"left",      0xff51}, {"up",     0xff52}, {"right", 0xff53}, {"down", 0xff54},
    {"home",      0xff50}, {"end",    0xff57},
    {"pageup",    0xff55}, {"pagedown", 0xff56},
};
constexpr NamedKey kModifiers[] = {
    {"cmd",   0xffeb}, {"command", 0xffeb},
    {"shift", 0xffe1},
    {"alt",   0xffe9}, {"option",  0xffe9},
    {"ctrl",  0xffe3}, {"control", 0xffe3},
};
// clang-format on

constexpr std::uint32_t kFirstFunctionKey = 0xffbe;  // F1
constexpr int kFunctionKeys = 24;

std::optional<std::uint32_t> find(std::span<const NamedKey> keys, std::string_view name) {
    const auto found = std::ranges::find(keys, name, &NamedKey::name);
    return found == keys.end() ? std::nullopt : std::optional(found->keysym);
}

std::optional<std::uint32_t> functionKey(std::string_view name) {
    int number = 0;
    if (!name.starts_with('f')) return std::nullopt;
    const auto [end, error] = std::from_chars(name.data() + 1, name.data() + name.size(), number);
    if (error != std::errc() || end != name.data() + name.size()) return std::nullopt;
    if (number < 1 || number > kFunctionKeys) return std::nullopt;
    return kFirstFunctionKey + static_cast<std::uint32_t>(number) - 1;
}

// Latin-1 characters are their own numbers; all others stand above 0x01000000.
std::uint32_t keysymOf(std::uint32_t character) {
    if (character == '\n' || character == '\r') return 0xff0d;
    if (character == '\t') return 0xff09;
    return character < 0x100 ? character : 0x01000000 + character;
}

}  // namespace

std::vector<std::uint32_t> keysymsOf(std::string_view text) {
    std::vector<std::uint32_t> keysyms;
    const auto* bytes = text.data();
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::int32_t i = 0; i < length;) {
        std::int32_t character = 0;
        U8_NEXT(bytes, i, length, character);
        if (character > 0) keysyms.push_back(keysymOf(static_cast<std::uint32_t>(character)));
    }
    return keysyms;
}

std::optional<std::uint32_t> keysymNamed(std::string_view name) {
    const std::string key = lowerCased(name);
    if (const auto named = find(kKeys, key)) return named;
    if (const auto function = functionKey(key)) return function;
    const auto characters = keysymsOf(name);
    return characters.size() == 1 ? std::optional(characters.front()) : std::nullopt;
}

std::optional<std::uint32_t> modifierNamed(std::string_view name) {
    return find(kModifiers, lowerCased(name));
}

}  // namespace tandrel
