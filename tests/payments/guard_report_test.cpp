#include "payments/guard_report.h"

#include <fstream>

#include <gmock/gmock.h>

#include "payments/printed.h"
#include "support/temporary_folder.h"

namespace tandrel::PaymentGuard {
namespace {

using testing::HasSubstr;

// Draws nothing: the screen as it is laid out, its first letter misread.
class SmudgedCases final : public CaseReader {
 public:
    Result<JudgedScreen> draw(const WrittenScreen& screen, const WrittenAction& action) override {
        JudgedScreen result = TRY(layOut(screen, action));
        for (auto& line : result.lines) line.text.front() = '#';
        return result;
    }
    Result<JudgedScreen> read(const std::filesystem::path& picture, const Action& action) override {
        if (picture.filename() != "till.png") return fail("no such picture");
        return JudgedScreen{{100, 100}, {{"Pay now", 40, 40, 20, 20}}, action};
    }
};

class GuardReport : public testing::Test {
 protected:
    std::pair<int, std::string> report(const std::string& cases) {
        const auto file = folder_.path() / "till.json";
        std::ofstream(file) << cases;
        return report(file);
    }
    static std::pair<int, std::string> report(const std::filesystem::path& file) {
        SmudgedCases reader;
        return printed([&](std::FILE* out) { return reportCases({file}, reader, out); });
    }
    static std::string written(const std::string& name, const std::string& row, bool asks,
                               const std::string& more = "") {
        return R"({"name":")" + name + R"(","category":"till","language":"German","screen":[")" +
               row + R"("],"action":"tap )" + row + R"(","asks":)" + (asks ? "true" : "false") +
               more + "}";
    }

    TemporaryFolder folder_;
};

TEST_F(GuardReport, CountsByCategoryLayerAndRuleAndNamesMistakes) {
    const auto [status, text] =
        report(R"({"cases":[)" + written("first", "[Pay now]", true) + "," +
               written("second", "[Jetzt bezahlen]", true) + "," +
               written("lost", "[Hinfort]", true) + "," + written("nothing", "[Karte]", false) +
               "," + written("loud", "[Jetzt kaufen]", false) + "," +
               written("smudged", "[Jetzt kaufen]", true, R"(,"drawn":true)") + "]}");
    EXPECT_EQ(status, 0);
    EXPECT_THAT(text, testing::StartsWith("6 cases, 1 of them read from a picture\n"));
    EXPECT_THAT(text, testing::ContainsRegex("till +\\| +4 +1 +1 +50.0 % +\\| +2 +0 +1 +50.0 %\n"));
    EXPECT_THAT(text, testing::ContainsRegex("German +\\| +4 +1 +1 +50.0 %"));
    EXPECT_THAT(text, testing::ContainsRegex("pay-words +\\| +1 +1 \\| +1 +1\n"));
    EXPECT_THAT(text, HasSubstr("missed   till / German / lost\n"));
    EXPECT_THAT(text, HasSubstr("missed   till / German / smudged\n"));
    EXPECT_THAT(text, HasSubstr("needless till / German / loud: a payment button "
                                "(\"Jetzt kaufen\") [pay-words]\n"));
}

TEST_F(GuardReport, TakesRecordedScreensAndPictures) {
    const std::string recorded =
        R"({"name":"a","frame":{"w":100,"h":100},"action":{"kind":"tap","x":0.5,"y":0.5},)"
        R"("lines":[{"text":"Pay now","x":40,"y":40,"w":20,"h":20}],"expect":)";
    const std::string picture = R"({"name":"p","picture":"till.png","asks":true,)"
                                R"("action":{"kind":"tap","x":0.5,"y":0.5}})";
    const auto [status, text] =
        report(R"({"cases":[)" + recorded + R"x({"verdict":"a payment button (\"Pay now\")"}},)x" +
               recorded + R"({"verdict":null}},)" + recorded + "{}}," + picture + "]}");
    EXPECT_EQ(status, 0);
    EXPECT_THAT(text, testing::StartsWith("3 cases, 1 of them read from a picture; 1 left out"));
    EXPECT_THAT(text, HasSubstr("needless till /  / a [first layer]\n"));
}

TEST_F(GuardReport, AFileThatIsNoneIsNamedWithThePlace) {
    const std::pair<std::string, const char*> rows[] = {
        {"", "line 1"},
        {"[]", "no list \"cases\""},
        {R"({"cases":[]})", "no list \"cases\""},
        {R"({"cases":[7]})", "cases[0]: it is not an object"},
        {R"({"cases":[{"screen":[]}]})", "cases[0]: \"screen\""},
        {R"({"cases":[{"screen":["a"],"asks":true}]})", "cases[0]: \"\" is no action"},
        {R"({"cases":[{"screen":["a"],"action":"tap b"}]})", "no row is \"b\""},
        {R"({"cases":[{"picture":"x.png","asks":true}]})", "cases[0]: no such picture"},
        {R"({"cases":[{"picture":7}]})", "\"picture\" is not a text"},
        {R"({"cases":[{"name":"a"}]})", "cases[0]: the case has no \"frame\""},
    };
    for (const auto& [content, why] : rows) {
        const auto [status, text] = report(content);
        EXPECT_EQ(status, 1) << content;
        EXPECT_THAT(text, AllOf(testing::StartsWith("can't read "), HasSubstr(why))) << content;
    }
    EXPECT_EQ(report(std::filesystem::path("/no/such.json")).first, 1);
}

}  // namespace
}  // namespace tandrel::PaymentGuard
