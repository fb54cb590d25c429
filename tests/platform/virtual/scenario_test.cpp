#include "platform/virtual/scenario.h"

#include <algorithm>
#include <sstream>

#include <gmock/gmock.h>

#include "base/file.h"
#include "platform/virtual/virtual_support.h"

namespace tandrel {
namespace {

using test::scenarioText;

const std::string kHome = R"({"name": "home", "kind": "home", "items": []})";

struct BadScenario {
    const char* name;
    std::string text;
    const char* error;  // after "demo.json: "
};

std::string itemScenario(const std::string& item) {
    return scenarioText(R"([{"name": "home", "items": [)" + item + "]}]");
}

class RefusedScenario : public testing::TestWithParam<BadScenario> {};

TEST_P(RefusedScenario, NamesFilePlaceAndWhatMustStandThere) {
    const auto read = parseScenario(GetParam().text, "demo.json");
    ASSERT_FALSE(read);
    EXPECT_EQ(read.error().message, std::string("demo.json: ") + GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(
    , RefusedScenario,
    testing::Values(
        BadScenario{"AList", "[]", "/: must be an object"},
        BadScenario{"NoPhone", "{}", "/phone: is missing"},
        BadScenario{"UnknownMember", R"({"phnoe": {}})",
                    "/phnoe: is not a member that this object can have"},
        BadScenario{"SlashInAName", R"({"a/b~c": 1})",
                    "/a~1b~0c: is not a member that this object can have"},
        BadScenario{"NameIsANumber", R"({"phone": {"id": 7}})", "/phone/id: must be text"},
        BadScenario{"HostIsNoUuid", R"({"phone": {"id": "a", "name": "b", "host": "c"}})",
                    "/phone/host: must be a UUID"},
        BadScenario{"TooSmall", scenarioText("[" + kHome + "]", R"("scale": 0.5)"),
                    "/phone/scale: must be a number from 1 to 4"},
        BadScenario{"Keyboard", scenarioText("[" + kHome + "]", R"("keyboard": "dvorak")"),
                    R"(/phone/keyboard: must be one of "us", "german", "russian")"},
        BadScenario{"NoPages", scenarioText("[]"), "/home: must be the name of a page"},
        BadScenario{"PagesTwice", scenarioText("[" + kHome + "," + kHome + "]"),
                    "/pages/1/name: is the name of an earlier page already"},
        BadScenario{"ItemKind", itemScenario(R"({"kind": "door"})"),
                    R"(/pages/0/items/0/kind: must be one of "icons", "rows", "text", "button", )"
                    R"("field", "image", "slide", "space")"},
        BadScenario{"TextIsANumber", itemScenario(R"({"kind": "text", "text": 12.5})"),
                    "/pages/0/items/0/text: must be text"},
        BadScenario{"RowWithoutText",
                    itemScenario(R"({"kind": "rows", "rows": [{"text": "a"}, {}]})"),
                    "/pages/0/items/0/rows/1/text: is missing"},
        BadScenario{"Color", itemScenario(R"({"kind": "image", "height": 9, "color": "#12345"})"),
                    R"(/pages/0/items/0/color: must be a color such as "#0A84FF")"},
        BadScenario{"SignedColor",
                    itemScenario(R"({"kind": "image", "height": 9, "color": "#-12345"})"),
                    R"(/pages/0/items/0/color: must be a color such as "#0A84FF")"},
        BadScenario{"Glyph", itemScenario(R"({"kind": "image", "height": 9, "glyph": "swan"})"),
                    "/pages/0/items/0/glyph: is not a glyph that there is"},
        BadScenario{"Height", itemScenario(R"({"kind": "space", "height": 2001})"),
                    "/pages/0/items/0/height: must be a number from 1 to 2000"},
        BadScenario{"LeadsNowhere",
                    itemScenario(R"({"kind": "button", "text": "a", "tap": {"go": "nowhere"}})"),
                    "/pages/0/items/0/tap/go: must be the name of a page"},
        BadScenario{"SheetOverNothing",
                    scenarioText("[" + kHome + R"(, {"name": "s", "kind": "sheet", "items": []}])"),
                    "/pages/1/over: is missing"},
        BadScenario{"SheetOverItself",
                    scenarioText("[" + kHome +
                                 R"(, {"name": "s", "kind": "sheet", "over": "s", "items": []}])"),
                    "/pages/1/over: must be another page"},
        BadScenario{"SheetOverSheet", scenarioText("[" + kHome + R"(,
                        {"name": "s", "kind": "sheet", "over": "t", "items": []},
                        {"name": "t", "kind": "sheet", "over": "s", "items": []}])"),
                    "/pages/1/over: must not be a sheet itself"},
        BadScenario{"ControlCode", itemScenario(R"({"kind": "text", "text": "a\u0000b"})"),
                    "/pages/0/items/0/text: must have no control characters"},
        BadScenario{"LongText",
                    itemScenario(R"({"kind": "text", "text": ")" + std::string(4001, 'a') + "\"}"),
                    "/pages/0/items/0/text: must be at most 4000 bytes"},
        BadScenario{"HugeNumber", scenarioText("[" + kHome + "]", R"("scale": 1e400)"),
                    "[json.exception.out_of_range.406] number overflow parsing '1e400'"},
        BadScenario{"TooLarge", std::string(1'000'001, ' '),
                    "a scenario has at most 1000000 bytes"}),
    [](const auto& row) { return row.param.name; });

TEST(Scenario, NamesTheFileWhereTheTextIsNoJson) {
    const auto read = parseScenario("{\"phone\": ", "demo.json");
    ASSERT_FALSE(read);
    EXPECT_THAT(read.error().message, testing::StartsWith("demo.json: "));
    EXPECT_THAT(read.error().message, testing::HasSubstr("line 1, column 11"));
}

TEST(Scenario, OfEveryLengthCutOffIsRefusedOrRead) {
    const auto text = readFile(test::shareFolder() / "scenarios/second.json", kLargestScenario);
    ASSERT_TRUE(text);
    for (std::size_t length = 0; length < text->size() - 1; length += 7) {
        EXPECT_FALSE(parseScenario(text->substr(0, length), "cut")) << length;
    }
}

std::string description() {
    return readFile(std::filesystem::path(TANDREL_SOURCE_DIR) / "docs/virtual-phone.md", 1'000'000)
        .value_or("");
}

TEST(Scenario, IsReadAsItsDescriptionSays) {
    const std::string text = description();
    const std::string opening = "```json\n";
    const auto start = text.find(opening) + opening.size();
    const auto example = parseScenario(text.substr(start, text.find("```", start) - start), "doc");
    ASSERT_TRUE(example) << example.error().message;
    EXPECT_EQ(example->phone.name, "My phone");
    EXPECT_EQ(example->phone.scale, 3);
    EXPECT_TRUE(example->phone.assistiveTouch);
    ASSERT_EQ(example->pages.size(), 4u);
    const Page& pay = *example->find("pay");
    EXPECT_EQ(pay.kind, PageKind::sheet);
    EXPECT_EQ(pay.over, "tickets");
    EXPECT_EQ(pay.sideButton->go, "done");
    EXPECT_EQ(pay.sideButton->count, "payments");
    EXPECT_EQ(example->find("done")->later->seconds, 3);
    const auto& rows = std::get<RowsItem>(example->find("tickets")->items[0]).rows;
    EXPECT_EQ(rows[0].detail, "€36.00");
    EXPECT_TRUE(rows[1].on);
}

TEST(Scenario, DescriptionNamesGlyphsThatThereAre) {
    const std::string text = description();
    const std::string opening = "The glyphs are ";
    const auto start = text.find(opening);
    ASSERT_NE(start, std::string::npos);
    std::string list = text.substr(start + opening.size());
    list.resize(list.find('.'));
    std::ranges::replace(list, ',', ' ');
    std::istringstream words(list);
    int names = 0;
    for (std::string name; words >> name;) {
        if (name == "and") continue;
        EXPECT_NE(findGlyph(name), nullptr) << name;
        ++names;
    }
    EXPECT_GT(names, 20);
}

TEST(Scenario, FileThatCannotBeReadIsNamed) {
    for (const char* file : {"/nonexistent/demo.json", "/"}) {
        const auto read = loadScenario(file);
        ASSERT_FALSE(read);
        EXPECT_THAT(read.error().message, testing::HasSubstr(file));
    }
}

}  // namespace
}  // namespace tandrel
