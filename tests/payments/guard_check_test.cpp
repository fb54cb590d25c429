#include "payments/guard_check.h"

#include <fstream>

#include <gtest/gtest.h>

#include "base/file.h"

namespace tandrel::PaymentGuard {
namespace {

const std::string kLines = R"("lines":[{"text":"Total €5","x":0,"y":0,"w":90,"h":10},)"
                           R"({"text":"Confirm","conf":0.9,"x":0,"y":100,"w":90,"h":10}])";

std::string fixture(const std::string& name, const std::string& expect) {
    return R"({"name":")" + name + R"(","frame":{"w":100,"h":200},)" + kLines +
           R"(,"action":{"kind":"tap","x":0.5,"y":0.5},"expect":)" + expect + "}";
}

class GuardCheck : public testing::Test {
 protected:
    std::filesystem::path folder_ = testing::TempDir() + "/guard_check." + std::to_string(getpid());
    std::filesystem::path file_ = folder_ / "cases.json";

    void SetUp() override { std::filesystem::create_directories(folder_); }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    struct Outcome {
        int status;
        std::string printed;
    };
    Outcome check(const std::string& content) {
        std::ofstream(file_) << content;
        return checkFile();
    }
    Outcome checkFile() {
        char* text = nullptr;
        std::size_t size = 0;
        std::FILE* out = open_memstream(&text, &size);
        const int status = checkFixtures(file_, out);
        std::fclose(out);
        Outcome outcome{status, std::string(text, size)};
        free(text);
        return outcome;
    }
};

TEST_F(GuardCheck, PassesWhenEveryCaseDoes) {
    const auto one = fixture("a", R"({"paymentScreen":true,"title":"Approve a payment of €5?",)"
                                  R"("verdict":"\"Confirm\" on a payment screen showing €5"})");
    const auto two = fixture("b", "{}");
    const auto outcome = check(R"({"cases":[)" + one + "," + two + "]}");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.printed, "2 passed, 0 failed\n");
}

TEST_F(GuardCheck, NamesEveryDifference) {
    const auto wrong = fixture("till", R"({"paymentScreen":false,"verdict":null,"title":"Why?",)"
                                       R"("summary":"€5"})");
    const auto outcome = check(R"({"cases":[)" + wrong + "," + fixture("b", "{}") + "]}");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.printed,
              "till: paymentScreen: expected false, came true\n"
              "till: verdict: expected null, came \"\\\"Confirm\\\" on a payment screen showing "
              "€5\"\n"
              "till: title: expected \"Why?\", came \"Approve a payment of €5?\"\n"
              "1 passed, 1 failed\n");
}

TEST_F(GuardCheck, RefusesWhatIsNotOfTheLayout) {
    const auto withMember = [](std::string_view before, std::string_view after) {
        std::string text = R"({"cases":[)" + fixture("a", "{}") + "]}";
        const auto at = text.find(before);
        EXPECT_NE(at, text.npos) << before;
        return text.replace(at, before.size(), after);
    };
    const struct {
        const char* name;
        std::string content;
        const char* reason;
    } cases[] = {
        {"empty", "", "parse error"},
        {"not JSON", "{", "parse error"},
        {"not UTF-8", "{\"cases\":[\"\xFF\"]}", "UTF-8"},
        {"a list", "[]", "the file is not an object"},
        {"no cases", "{}", "the file has no \"cases\""},
        {"cases of another type", R"({"cases":{}})", "cases is not a list"},
        {"an empty list", R"({"cases":[]})", "no cases"},
        {"a case of another type", R"({"cases":[3]})", "cases[0] is not an object"},
        {"name of another type", withMember(R"("name":"a")", R"("name":7)"),
         "cases[0].name is not a text"},
        {"no frame", withMember(R"("frame")", R"("Frame")"), "cases[0] has no \"frame\""},
        {"frame of another type", withMember(R"({"w":100,"h":200})", "null"),
         "cases[0].frame is not an object"},
        {"width in words", withMember(R"("w":100)", R"("w":"100")"),
         "cases[0].frame.w is not a number"},
        {"line of another type", withMember(R"("lines":[)", R"("lines":["Total",)"),
         "cases[0].lines[0] is not an object"},
        {"line without text", withMember(R"("text":"Confirm",)", ""),
         "cases[0].lines[1] has no \"text\""},
        {"line without a box", withMember(R"("y":100,)", ""), "cases[0].lines[1] has no \"y\""},
        {"confidence in words", withMember("0.9", "\"0.9\""),
         "cases[0].lines[1].conf is not a number"},
        {"kind unknown", withMember("\"tap\"", "\"press\""), "cases[0].action.kind is not \"tap\""},
        {"no kind", withMember(R"("kind":"tap",)", ""), "cases[0].action has no \"kind\""},
        {"point in words", withMember(R"("x":0.5)", R"("x":"0.5")"),
         "cases[0].action.x is not a number"},
        {"expectation misspelt", withMember(R"("expect":{})", R"("expect":{"verdikt":null})"),
         "cases[0].expect has a member \"verdikt\""},
        {"expectation of another type", withMember(R"("expect":{})", R"("expect":{"title":null})"),
         "cases[0].expect.title is not a text"},
        {"text without end", withMember("Confirm", std::string(501, 'x')),
         "cases[0].lines[1].text is longer than 500 bytes"},
        {"number beyond all bounds", withMember("0.9", "1e999"), "overflow"},
        {"depth", std::string(100'000, '['), "nested deeper"},
        {"depth in a member nobody reads",
         withMember(R"("name":"a")",
                    R"("name":"a","z":)" + std::string(70, '[') + std::string(70, ']')),
         "nested deeper"},
    };
    for (const auto& c : cases) {
        const auto outcome = check(c.content);
        EXPECT_EQ(outcome.status, 1) << c.name;
        EXPECT_EQ(outcome.printed.rfind("can't read " + file_.string() + ": ", 0), 0u) << c.name;
        EXPECT_NE(outcome.printed.find(c.reason), std::string::npos)
            << c.name << ": " << outcome.printed;
        EXPECT_EQ(outcome.printed.find('\n'), outcome.printed.size() - 1) << c.name;
    }
}

TEST_F(GuardCheck, RefusesWhatIsNoFile) {
    EXPECT_EQ(checkFile().printed.rfind("can't read ", 0), 0u);
    std::filesystem::create_directories(file_);
    EXPECT_EQ(checkFile().printed.rfind("can't read ", 0), 0u);
    std::filesystem::remove(file_);
    std::ofstream(file_).close();
    std::filesystem::resize_file(file_, kLargestFixtureFile + 1);
    EXPECT_EQ(checkFile().printed.rfind("can't read ", 0), 0u);
}

TEST_F(GuardCheck, WhatItPrintsCannotMoveTheCursor) {
    const auto outcome =
        check(R"({"cases":[)" +
              fixture(R"(a\u001b[2J\u009b1m\nb\u202ec)", R"({"title":"\u202e"})") + "]}");
    EXPECT_EQ(outcome.printed,
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
