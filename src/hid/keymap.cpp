#include "hid/keymap.h"

#include <string>

#include "base/unicode.h"

namespace tandrel {
namespace {

constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz";  // from usage 0x04
constexpr std::string_view kDigits = "1234567890";                   // from usage 0x1E

struct Key {
    char character;
    std::uint8_t usage;
};

// Usage 0x32 (non-US hash) is not on this keyboard.
// clang-format off
constexpr auto kOtherKeys = std::to_array<Key>({
    {'\n', 0x28}, {'\t', 0x2B}, {' ',  0x2C}, {'-', 0x2D}, {'=', 0x2E}, {'[', 0x2F}, {']', 0x30},
    {'\\', 0x31}, {';',  0x33}, {'\'', 0x34}, {'`', 0x35}, {',', 0x36}, {'.', 0x37}, {'/', 0x38},
});

// Position by position: the symbol that Shift makes of the key below it.
constexpr std::string_view kShifted = "!@#$%^&*()_+{}|:\"~<>?";
constexpr std::string_view kUnshifted = "1234567890-=[]\\;'`,./";
// clang-format on
static_assert(kShifted.size() == 21 && kUnshifted.size() == 21);

// Every character of the keyboard is ASCII, so a table of 128 strokes holds them all; usage 0 marks
// a character that no key makes.
constexpr std::size_t kAscii = 128;

constexpr std::size_t index(char character) { return static_cast<unsigned char>(character); }

constexpr std::array<Keymap::Stroke, kAscii> kStrokes = [] {
    std::array<Keymap::Stroke, kAscii> strokes{};
    for (std::size_t i = 0; i < kLetters.size(); ++i) {
        strokes[index(kLetters[i])].code = static_cast<std::uint8_t>(0x04 + i);
    }
    for (std::size_t i = 0; i < kDigits.size(); ++i) {
        strokes[index(kDigits[i])].code = static_cast<std::uint8_t>(0x1E + i);
    }
    for (const Key& key : kOtherKeys) strokes[index(key.character)].code = key.usage;

    constexpr char kToUpper = 'A' - 'a';
    for (const char letter : kLetters) {
        strokes[index(static_cast<char>(letter + kToUpper))] = {strokes[index(letter)].code,
                                                                Keymap::shift};
    }
    for (std::size_t i = 0; i < kShifted.size(); ++i) {
        strokes[index(kShifted[i])] = {strokes[index(kUnshifted[i])].code, Keymap::shift};
    }
    return strokes;
}();

}  // namespace

std::optional<Keymap::Stroke> Keymap::stroke(std::string_view character) {
    // Some characters beyond ASCII are canonically equal to one in it: the Kelvin sign to "K".
    const std::string form = character.size() == 1 ? std::string(character) : composed(character);
    if (form.size() != 1 || index(form[0]) >= kAscii) return std::nullopt;
    const Stroke stroke = kStrokes[index(form[0])];
    return stroke.code == 0 ? std::nullopt : std::optional(stroke);
}

}  // namespace tandrel
