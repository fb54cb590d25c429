#include "http/target.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

using Query = std::map<std::string, std::string>;

TEST(Target, SplitsAndDecodes) {
    const std::tuple<const char*, const char*, const char*, Query> rows[] = {
        {"plain", "/status", "/status", {}},
        {"empty values", "/status?device=&x", "/status", {{"device", ""}, {"x", ""}}},
        {"later duplicate", "/s?a=1&a=2", "/s", {{"a", "2"}}},
        {"only the first = splits", "/s?a=b=c", "/s", {{"a", "b=c"}}},
        {"plus stays", "/a+b?c+d=e+f", "/a+b", {{"c+d", "e+f"}}},
        {"escapes", "/a%20b?%C3%A9=%26%3D", "/a b", {{"\u00e9", "&="}}},
        {"lower-case escape", "/%c3%a9", "/\u00e9", {}},
        {"escaped slash and mark", "/a%2Fb%3Fc", "/a/b?c", {}},
        {"fragment", "/s?a=1#b?c=2", "/s", {{"a", "1"}}},
        {"fragment before mark", "/s#x?a=1", "/s", {}},
        {"nothing after mark", "/s?", "/s", {}},
        {"empty items", "/s?&&a=1&", "/s", {{"a", "1"}}},
        {"empty name", "/s?=1", "/s", {{"", "1"}}},
        {"absolute form", "http://x/path?q=1", "/path", {{"q", "1"}}},
        {"absolute without path", "http://x", "", {}},
        {"host only", "//x/path", "/path", {}},
        {"colon in a path", "/a:b//c", "/a:b//c", {}},
        {"colon after a slash is no scheme", "a/b:c", "a/b:c", {}},
        {"colon in a value", "/s?u=http://x/y", "/s", {{"u", "http://x/y"}}},
        {"asterisk", "*", "*", {}},
        {"mark first", "?a=1", "", {{"a", "1"}}},
        {"bad escape in the path", "/a%zz?b=1", "/a%zz", {{"b", "1"}}},
        {"cut escape", "/a%4", "/a%4", {}},
        {"bad escape in a value", "/s?device=50%", "/s", {{"device", "50%"}}},
        {"escapes that are no UTF-8", "/%FF?x=%C3", "/%FF", {{"x", "%C3"}}},
        {"raw UTF-8", "/\u00e9?x=\u00fc", "/\u00e9", {{"x", "\u00fc"}}},
    };
    for (const auto& [name, text, path, query] : rows) {
        SCOPED_TRACE(name);
        const Target target = parseTarget(text);
        EXPECT_EQ(target.path, path);
        EXPECT_EQ(target.query, query);
    }
}

TEST(Target, KeepsANulByte) { EXPECT_EQ(parseTarget("/tap%00").path, std::string("/tap\0", 5)); }

TEST(Target, EncodesWhatHasAMeaning) {
    EXPECT_EQ(percentEncoded("az AZ09-._~/?&=+%#\u00e9"),
              "az%20AZ09-._~%2F%3F%26%3D%2B%25%23%C3%A9");
}

}  // namespace
}  // namespace tandrel
