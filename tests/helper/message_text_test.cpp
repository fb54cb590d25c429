#include "helper/message_text.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(MessageText, IsWhatJsonPrescribes) {
    const std::string plain(1000, 'A');
    EXPECT_EQ(messageText(plain), '"' + plain + '"');
    // A character that must be escaped is found wherever it stands among plain ones.
    for (const std::size_t at : {0U, 1U, 63U, 64U, 127U, 960U, 999U}) {
        std::string text = plain;
        text[at] = '\n';
        EXPECT_EQ(messageText(text),
                  '"' + plain.substr(0, at) + "\\n" + plain.substr(at + 1) + '"');
    }
    EXPECT_EQ(messageText(Json::parse(R"({"b":[],"a":{},"c\n":[1,-2.5,null,true,"x\"y"]})")),
              R"({"a":{},"b":[],"c\n":[1,-2.5,null,true,"x\"y"]})");
    EXPECT_EQ(messageText("caf\u00e9 \\ \x01"), "\"caf\u00e9 \\\\ \\u0001\"");
    EXPECT_EQ(messageText("\xFF"), "\"\xEF\xBF\xBD\"");
}

}  // namespace
}  // namespace tandrel
