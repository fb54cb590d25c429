#include "payments/guard_check.h"

#include <fstream>

#include <gmock/gmock.h>

#include "payments/printed.h"
#include "support/temporary_folder.h"

namespace tandrel::PaymentGuard {
namespace {

using testing::StartsWith;

const std::string kLines = R"("lines":[{"text":"Total €5","x":0,"y":0,"w":90,"h":10},)"
                           R"({"text":"Confirm","conf":0.9,"x":0,"y":100,"w":90,"h":10}])";

std::string fixture(const std::string& name, const std::string& expect) {
    return R"({"name":")" + name + R"(","frame":{"w":100,"h":200},)" + kLines +
           R"(,"action":{"kind":"tap","x":0.5,"y":0.5},"expect":)" + expect + "}";
}

class GuardCheck : public testing::Test {
 protected:
    const TemporaryFolder folder_;
    const std::filesystem::path file_ = folder_.path() / "cases.json";

    std::pair<int, std::string> check(const std::string& content) {
        std::ofstream(file_) << content;
        return checkFile();
    }
    std::pair<int, std::string> checkFile() {
        return printed([&](std::FILE* out) { return checkFixtures(file_, out); });
    }
};

TEST_F(GuardCheck, PassesWhenEveryCaseDoes) {
    const auto one = fixture("a", R"({"paymentScreen":true,"title":"Approve a payment of €5?",)"
                                  R"("verdict":"\"Confirm\" on a payment screen showing €5"})");
    const auto two = fixture("b", "{}");
    EXPECT_EQ(check(R"({"cases":[)" + one + "," + two + "]}"),
              std::pair(0, std::string("2 passed, 0 failed\n")));
}

TEST_F(GuardCheck, NamesEveryDifference) {
    const auto wrong = fixture("till", R"({"paymentScreen":false,"verdict":null,"title":"Why?",)"
                                       R"("summary":"€5"})");
    const auto [status, text] = check(R"({"cases":[)" + wrong + "," + fixture("b", "{}") + "]}");
    EXPECT_EQ(status, 1);
    EXPECT_EQ(text,
              "till: paymentScreen: expected false, came true\n"
              "till: verdict: expected null, came \"\\\"Confirm\\\" on a payment screen showing "
              "€5\"\n"
              "till: title: expected \"Why?\", came \"Approve a payment of €5?\"\n"
              "1 passed, 1 failed\n");
}

TEST_F(GuardCheck, RefusesWhatIsNotOfTheLayout) {
    const auto with = [](std::string_view before, std::string_view after) {
        std::string text = R"({"cases":[)" + fixture("a", "{}") + "]}";
        const auto at = text.find(before);
        EXPECT_NE(at, text.npos) << before;
        return text.replace(at, before.size(), after);
    };
    const std::string deepMember =
        R"("name":"a","z":)" + std::string(70, '[') + std::string(70, ']');
    const std::pair<std::string, const char*> cases[] = {
        {"{", "parse error"},
        {"{\"cases\":[\"\xFF\"]}", "UTF-8"},
        {"[]", "the file is not an object"},
        {"{}", "the file has no \"cases\""},
        {R"({"cases":{}})", "cases is not a list"},
        {R"({"cases":[]})", "no cases"},
        {R"({"cases":[3]})", "cases[0] is not an object"},
        {with(R"("name":"a")", R"("name":7)"), "cases[0].name is not a text"},
        {with(R"("frame")", R"("Frame")"), "cases[0] has no \"frame\""},
        {with(R"({"w":100,"h":200})", "null"), "cases[0].frame is not an object"},
        {with(R"("w":100)", R"("w":"100")"), "cases[0].frame.w is not a number"},
        {with(R"("lines":[)", R"("lines":["Total",)"), "cases[0].lines[0] is not an object"},
        {with(R"("text":"Confirm",)", ""), "cases[0].lines[1] has no \"text\""},
        {with("0.9", "\"0.9\""), "cases[0].lines[1].conf is not a number"},
        {with("\"tap\"", "\"press\""), "cases[0].action.kind is not \"tap\""},
        {with(R"("kind":"tap",)", ""), "cases[0].action has no \"kind\""},
        {with(R"("expect":{})", R"("expect":{"verdikt":null})"),
         "cases[0].expect has a member \"verdikt\""},
        {with(R"("expect":{})", R"("expect":{"title":null})"),
         "cases[0].expect.title is not a text"},
        {with("Confirm", std::string(501, 'x')), "cases[0].lines[1].text is longer than 500 bytes"},
        {with("0.9", "1e999"), "overflow"},
        {std::string(100'000, '['), "nested deeper"},
        {with(R"("name":"a")", deepMember), "nested deeper"},
    };
    for (const auto& [content, reason] : cases) {
        const auto [status, text] = check(content);
        EXPECT_EQ(status, 1) << reason;
        EXPECT_THAT(text, StartsWith("can't read " + file_.string() + ": ")) << reason;
        EXPECT_THAT(text, testing::HasSubstr(reason));
        EXPECT_EQ(text.find('\n'), text.size() - 1) << reason;
    }
}

TEST_F(GuardCheck, RefusesWhatIsNoFile) {
    EXPECT_THAT(checkFile().second, StartsWith("can't read "));
    std::filesystem::create_directories(file_);
    EXPECT_THAT(checkFile().second, StartsWith("can't read "));
    std::filesystem::remove(file_);
    std::ofstream(file_).close();
    std::filesystem::resize_file(file_, kLargestFixtureFile + 1);
    EXPECT_THAT(checkFile().second, StartsWith("can't read "));
}

TEST_F(GuardCheck, WhatItPrintsCannotMoveTheCursor) {
    const auto outcome =
        check(R"({"cases":[)" +
              fixture(R"(a\u001b[2J\u009b1m\nb\u202ec)", R"({"title":"\u202e"})") + "]}");
    EXPECT_EQ(outcome.second,
              "a [2J 1m b c: title: expected \" \", came \"Approve a payment of €5?\"\n"
              "0 passed, 1 failed\n");
}

TEST(ShippedFixtures, AllPass) {
    const auto files = shippedFixtures(std::filesystem::path(TANDREL_SOURCE_DIR) / "share/tandrel");
    std::size_t asked = 0;
    std::size_t let = 0;
    for (const auto& file : files) {
        const auto fixtures = readFixtures(file);
        ASSERT_TRUE(fixtures) << file << ": " << fixtures.error().message;
        for (const auto& one : *fixtures) {
            for (const auto& line : differences(one)) ADD_FAILURE() << line;
            ASSERT_TRUE(one.expect.verdict && one.expect.paymentScreen) << one.name;
            ++(*one.expect.verdict ? asked : let);
        }
    }
    EXPECT_GE(asked, 70u);
    EXPECT_GE(let, 70u);
}

}  // namespace
}  // namespace tandrel::PaymentGuard
