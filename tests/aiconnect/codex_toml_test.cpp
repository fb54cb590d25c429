#include "aiconnect/codex_toml.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

const std::string kEntry =
    "[mcp_servers.tandrel]\n"
    "command = \"/opt/Tandrel/bin/tandrel\"\n"
    "args = [\"mcp\"]\n";
const std::string kHelper = "/opt/Tandrel/bin/tandrel";

TEST(TomlHeader, IsTheNormalisedNameOfAHeaderLineOnly) {
    const std::pair<const char*, const char*> headers[] = {
        {"[a]", "a"},
        {"  [\"mcp_servers\".'tandrel']  # comment", "mcp_servers.tandrel"},
        {"[[mcp_servers.tandrel]]", "mcp_servers.tandrel"},
        {"[ mcp_servers . tandrel . env ]\r", "mcp_servers.tandrel.env"},
        {"\t[[ a-b_9 ]]\t#", "a-b_9"},
        {"[a b]", "a b"},
        {"[ ]", ""},
    };
    for (const auto& [line, name] : headers) EXPECT_EQ(tomlHeader(line), name) << line;
    for (const char* line : {"args = [\"mcp\"]", "[\"mcp\"],", "[a] b", "[a]]]", "[[[a]]]", "[]",
                             "[a", "[a\tb]", "[a\\u0062]", "# [a]", ""}) {
        EXPECT_EQ(tomlHeader(line), std::nullopt) << line;
    }
}

TEST(MergeCodex, TakesOurTablesOutAndKeepsEveryOtherLine) {
    const std::tuple<const char*, std::string, std::string> rows[] = {
        {"nothing", "", ""},
        {"blank lines only", "\n \n\t\n", ""},
        {"an old table", "model = \"o4\"\n[mcp_servers.tandrel]\ncommand = \"/old\"\n",
         "model = \"o4\"\n\n"},
        {"between others",
         "# mine\n[mcp_servers.other]\ncommand = \"x\" # y\n\n[mcp_servers.tandrel]\ncommand = "
         "\"/old\"\n\n[mcp_servers.tandrel.env]\nA = \"b\"\n[profiles.p]\nmodel = \"o4\"\n",
         "# mine\n[mcp_servers.other]\ncommand = \"x\" # y\n\n[profiles.p]\nmodel = \"o4\"\n\n"},
        {"twice, once as an array", "[[mcp_servers.tandrel]]\na=1\n[b]\n[mcp_servers.'tandrel']\n",
         "[b]\n\n"},
        {"a table with a path for a name follows",
         "[mcp_servers.tandrel]\ncommand = \"/old\"\n\n[projects.\"/home/ada/app\"] # mine\n"
         "trust_level = \"trusted\"\n[projects.'/x y']\na = 1\n",
         "[projects.\"/home/ada/app\"] # mine\ntrust_level = \"trusted\"\n[projects.'/x y']\na = "
         "1\n\n"},
        {"a header that is not plain follows", "[mcp_servers.tandrel]\n[\"na\xC3\xAFve\"]\na = 1\n",
         "[\"na\xC3\xAFve\"]\na = 1\n\n"},
        {"letters beyond ASCII and percent signs",
         "# naïve, 100 %\n\"é%C3\" = 'ü %'\n[mcp_servers.tandrel]\nx = \"é\"\n",
         "# naïve, 100 %\n\"é%C3\" = 'ü %'\n\n"},
        {"a neighbour with a like name", "[mcp_servers.tandrel2]\na = 1",
         "[mcp_servers.tandrel2]\na = 1\n\n"},
        {"CRLF lines", "a = 1\r\n[mcp_servers.tandrel]\r\nx = 1\r\n[b]\r\nc = 2\r\n\r\n",
         "a = 1\r\n[b]\r\nc = 2\r\n\n"},
        {"a byte-order mark", "\xEF\xBB\xBF[mcp_servers.tandrel]\nx = 1\n[b]\n",
         "\xEF\xBB\xBF[b]\n\n"},
    };
    for (const auto& [name, before, kept] : rows) {
        EXPECT_EQ(mergeCodexSafely(before, kHelper), kept + kEntry) << name;
        EXPECT_EQ(mergeCodexSafely(kept + kEntry, kHelper), kept + kEntry) << name;
    }
}

TEST(MergeCodex, EscapesThePath) {
    EXPECT_EQ(mergeCodex("", R"(/a "b"\c)"),
              "[mcp_servers.tandrel]\ncommand = \"/a \\\"b\\\"\\\\c\"\nargs = [\"mcp\"]\n");
    for (const char* path : {R"(/a "b"\c)", "/Å é/%41/%", "/%C3%A9", "/\u4e2d/100%"}) {
        const auto merged = mergeCodexSafely("", path);
        ASSERT_TRUE(merged) << path;
        EXPECT_EQ(codexLink(*merged, path), Link::addedHere) << path;
        EXPECT_EQ(codexLink(*merged, "/else"), Link::addedElsewhere) << path;
    }
}

TEST(MergeCodex, RefusesWhatItWouldDamage) {
    std::string deepKey = "a";
    for (int i = 0; i < 100'000; ++i) deepKey += ".a";
    const std::pair<const char*, std::string> rows[] = {
        {"inline table of servers", "mcp_servers = { other = { command = \"x\" } }"},
        {"the same, indented", "a = 1\n  mcp_servers={}\n"},
        {"dotted keys", "mcp_servers.other.command = \"x\"\n"},
        {"dotted keys after blanks", "mcp_servers . other = 1\n"},
        {"quoted inline table", "\"mcp_servers\" = { other = { command = \"x\" } }"},
        {"quoted dotted keys", "\"mcp_servers\".tandrel.command = \"x\"\n"},
        {"our entry inline", "[mcp_servers]\ntandrel = { command = \"x\" }\n"},
        {"our entry in dotted keys", "[mcp_servers]\ntandrel.command = \"x\"\n"},
        {"our entry with an escaped key", "[mcp_servers.\"tan\\u0064rel\"]\ncommand = \"x\"\n"},
        {"servers as an array of tables", "[[mcp_servers]]\na = 1\n"},
        {"a header of ours inside a text", "a = '''\n[mcp_servers.tandrel]\nmine\n'''\n"},
        {"a nested list in our table", "[mcp_servers.tandrel]\na = [\n[\"x\"]\n]\n[b]\n"},
        {"a bare key beyond ASCII", "mod\xC3\xA9l = 1\n"},
        {"a bare key beyond ASCII in a header", "[mod\xC3\xA9l]\n"},
        {"a bare key with a percent sign", "a%20 = 1\n"},
        {"a date in a key", "co1979-05-27T07:32:00Zmmand = \"x\"\n"},
        {"another table twice", "[a]\n[a]\n"},
        {"not TOML", "hello"},
        {"not text", std::string("a = \"\xff\xfe\0\"\n", 10)},
        {"UTF-16", std::string("\xff\xfe=\0a\0", 6)},
        {"keys that nest very deeply", deepKey + " = 1\n"},
        {"values that nest very deeply", "a = " + std::string(100'000, '[')},
    };
    for (const auto& [name, text] : rows) EXPECT_FALSE(mergeCodexSafely(text, kHelper)) << name;
    EXPECT_FALSE(mergeCodexSafely("", "/a\nb")) << "a path that no line can hold";
}

TEST(CodexLink, TellsWhoseEntryItIs) {
    const std::pair<std::string, Link> rows[] = {
        {"", Link::notAdded},
        {"[mcp_servers.other]\ncommand = \"/opt/Tandrel/bin/tandrel\"\n", Link::notAdded},
        {"# [mcp_servers.tandrel]", Link::notAdded},
        {kEntry, Link::addedHere},
        {"[ 'mcp_servers'.tandrel ]\r\nargs = [\"command\"]\r\n command='/opt/Tandrel/bin/tandrel' "
         "# x",
         Link::addedHere},
        {"[mcp_servers.tandrel]\n\"command\" = \"\\u002Fopt/Tandrel/bin/tandrel\"",
         Link::addedHere},
        {"[mcp_servers.tandrel]\ncommand = \"/Volumes/Tandrel/bin/tandrel\"", Link::addedElsewhere},
        {"[mcp_servers.tandrel]\ncommand = 7", Link::addedElsewhere},
        {"[mcp_servers.tandrel]\n[projects.\"/x\"]\ncommand = \"/opt/Tandrel/bin/tandrel\"",
         Link::addedElsewhere},
        {"[mcp_servers.tandrel]\n[mcp_servers.tandrel.env]\ncommand = \"/opt/Tandrel/bin/tandrel\"",
         Link::addedElsewhere},
        {"[mcp_servers]\ntandrel = {command = \"/opt/Tandrel/bin/tandrel\"}", Link::addedHere},
        {"mcp_servers.tandrel.command = \"/x\"", Link::addedElsewhere},
        {"mcp_servers = { tandrel = 1 }", Link::addedElsewhere},
    };
    for (const auto& [text, link] : rows) EXPECT_EQ(codexLink(text, kHelper), link) << text;
}

}  // namespace
}  // namespace tandrel
