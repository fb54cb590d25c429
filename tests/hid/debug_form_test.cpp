#include "hid/debug_form.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(DebugForm, ShowsACharacterAsAStringLiteralDoes) {
    // A C1 control is shown by its number, the no-break space just past them is not.
    const std::pair<std::string, std::string> rows[] = {
        {"é", "\"é\""},          {"👩‍🚀", "\"👩‍🚀\""},
        {"\n", R"("\n")"},       {"\t", R"("\t")"},
        {"\r\n", R"("\r\n")"},   {std::string(1, '\0'), R"("\0")"},
        {"\"", R"("\"")"},       {"\\", R"("\\")"},
        {"\x1B", R"("\u{1B}")"}, {"\x07", R"("\u{07}")"},
        {"\x7F", R"("\u{7F}")"}, {"\u0085", R"("\u{85}")"},
        {"\u00A0", "\"\u00A0\""}};
    for (const auto& [character, shown] : rows) EXPECT_EQ(debugForm(character), shown);
}

TEST(DebugForm, CutsAnEndlessCharacterBetweenCodePoints) {
    std::string zalgo = "e";
    for (int i = 0; i < 100'000; ++i) zalgo += "\u0301";
    // One byte and 31 marks of two bytes; the 64th byte would be half of the next mark.
    EXPECT_EQ(debugForm(zalgo), '"' + zalgo.substr(0, 63) + '"');
}

}  // namespace
}  // namespace tandrel
