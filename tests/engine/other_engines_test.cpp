#include "engine/other_engines.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(OtherEngines, AreNamedByTheirStatus) {
    const std::tuple<int, const char*, const char*> rows[] = {
        {200, R"({"app":"Tandrel"})", "Tandrel"},
        {200, R"({"app":"tandrel-mirror"})", "Tandrel Mirror"},
        {200, R"({"app":"Some Other","bluetooth":1})", "Some Other"},
        {200, R"({"bluetooth":true})", "PocketLink"},
        {200, R"({"app":7})", "another app"},
        {200, "<html>", "another app"},
        {404, "", "another app"},
        {403, R"({"error":"x"})", "another user's Tandrel"},
    };
    for (const auto& [status, body, name] : rows) {
        EXPECT_EQ(answererName(status, body), name) << status << " " << body;
    }
}

}  // namespace
}  // namespace tandrel
