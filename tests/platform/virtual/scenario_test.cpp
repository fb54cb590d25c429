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

std::string phoneScenario(const std::string& phone) {
    return scenarioText("[" + kHome + "]", phone);
}
std::string sheets(const std::string& items) {
    return scenarioText("[" + kHome + ", " + items + "]");
}

void expectRefused(const std::string& text, const std::string& error) {
    const auto read = parseScenario(text, "demo.json");
    ASSERT_FALSE(read) << error;
    EXPECT_EQ(read.error().message, "demo.json: " + error);
}

TEST(Scenario, RefusedNamesFilePlaceAndWhatMustStandThere) {
    const std::pair<std::string, const char*> rows[] = {
        {"[]", "/: must be an object"},
        {"{}", "/phone: is missing"},
        {R"({"phnoe": {}})", "/phnoe: is not a member that this object can have"},
        {R"({"a/b~c": 1})", "/a~1b~0c: is not a member that this object can have"},
        {R"({"phone": {"id": 7}})", "/phone/id: must be text"},
        {R"({"phone": {"id": "a", "name": "b", "host": "c"}})", "/phone/host: must be a UUID"},
        {phoneScenario(R"("scale": 0.5)"), "/phone/scale: must be a number from 1 to 4"},
        {phoneScenario(R"("keyboard": "dvorak")"),
         R"(/phone/keyboard: must be one of "us", "german", "russian")"},
        {phoneScenario(R"("scale": 1e400)"),
         "[json.exception.out_of_range.406] number overflow parsing '1e400'"},
        {scenarioText("[]"), "/home: must be the name of a page"},
        {sheets(kHome), "/pages/1/name: is the name of an earlier page already"},
        {sheets(R"({"name": "s", "kind": "sheet", "items": []})"), "/pages/1/over: is missing"},
        {sheets(R"({"name": "s", "kind": "sheet", "over": "s", "items": []})"),
         "/pages/1/over: must be another page"},
        {sheets(R"({"name": "s", "kind": "sheet", "over": "t", "items": []},
                   {"name": "t", "kind": "sheet", "over": "s", "items": []})"),
         "/pages/1/over: must not be a sheet itself"},
        {std::string(1'000'001, ' '), "a scenario has at most 1000000 bytes"},
    };
    for (const auto& [text, error] : rows) expectRefused(text, error);
}

TEST(Scenario, RefusedItemIsNamedByItsPlace) {
    const std::string color = R"(color: must be a color such as "#0A84FF")";
    const std::pair<std::string, std::string> rows[] = {
        {R"("door")", R"(kind: must be one of "icons", "rows", "text", "button", "field", )"
                      R"("image", "slide", "space")"},
        {R"("rows", "rows": [{"text": "a"}, {}])", "rows/1/text: is missing"},
        {R"("image", "height": 9, "color": "#12345")", color},
        {R"("image", "height": 9, "color": "#-12345")", color},
        {R"("image", "height": 9, "glyph": "swan")", "glyph: is not a glyph that there is"},
        {R"("space", "height": 2001)", "height: must be a number from 1 to 2000"},
        {R"("button", "text": "a", "tap": {"go": "x"})", "tap/go: must be the name of a page"},
        {R"("text", "text": "a\u0000b")", "text: must have no control characters"},
        {R"("text", "text": ")" + std::string(4001, 'a') + '"', "text: must be at most 4000 bytes"},
    };
    for (const auto& [item, error] : rows) {
        expectRefused(scenarioText(R"([{"name": "home", "items": [{"kind": )" + item + "}]}]"),
                      "/pages/0/items/0/" + error);
    }
}

TEST(Scenario, NamesTheFileAndThePlaceWhereTheTextIsNoJson) {
    EXPECT_THAT(parseScenario("{\"phone\": ", "demo.json").error().message,
                testing::AllOf(testing::StartsWith("demo.json: "),
                               testing::HasSubstr("line 1, column 11")));
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
    const auto start = text.find("```json\n") + 8;
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
    std::string list = text.substr(text.find("The glyphs are ") + 15);
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

}  // namespace
}  // namespace tandrel
