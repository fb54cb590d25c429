#include "hid/debug_form.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(DebugForm, ShowsACharacterAsAStringLiteralDoes) {
    const struct {
        const char* name;
        std::string character;
        std::string shown;
    } rows[] = {
        {"letter", "é", "\"é\""},
        {"emoji", "👩‍🚀", "\"👩‍🚀\""},
        {"line feed", "\n", R"("\n")"},
        {"tab", "\t", R"("\t")"},
        {"carriage return and line feed", "\r\n", R"("\r\n")"},
        {"zero", std::string(1, '\0'), R"("\0")"},
        {"quote", "\"", R"("\"")"},
        {"backslash", "\\", R"("\\")"},
        {"escape", "\x1B", R"("\u{1B}")"},
        {"bell", "\x07", R"("\u{07}")"},
        {"delete", "\x7F", R"("\u{7F}")"},
        {"next line, a C1 control", "\u0085", R"("\u{85}")"},
        {"no-break space, just past C1", "\u00A0", "\"\u00A0\""},
    };
    for (const auto& row : rows) EXPECT_EQ(debugForm(row.character), row.shown) << row.name;
}

TEST(DebugForm, CutsAnEndlessCharacterBetweenCodePoints) {
    std::string zalgo = "e";
    for (int i = 0; i < 100'000; ++i) zalgo += "\u0301";
    // One byte and 31 marks of two bytes; the 64th byte would be half of the next mark.
    EXPECT_EQ(debugForm(zalgo), '"' + zalgo.substr(0, 63) + '"');
}

}  // namespace
}  // namespace tandrel
