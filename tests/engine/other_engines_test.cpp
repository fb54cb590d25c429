#include "engine/other_engines.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(OtherEngines, AreNamedByTheirStatus) {
    struct Row {
        int status;
        const char* body;
        const char* name;
    };
    for (const Row& row :
         {Row{200, R"({"app":"Tandrel"})", "Tandrel"},
          Row{200, R"({"app":"tandrel-mirror"})", "Tandrel Mirror"},
          Row{200, R"({"app":"Some Other","bluetooth":1})", "Some Other"},
          Row{200, R"({"bluetooth":true})", "PocketLink"}, Row{200, "{}", "another app"},
          Row{200, R"({"app":7})", "another app"}, Row{200, "[]", "another app"},
          Row{200, "<html>", "another app"}, Row{404, "", "another app"},
          Row{403, R"({"error":"x"})", "another user's Tandrel"}}) {
        EXPECT_EQ(answererName(row.status, row.body), row.name) << row.status << " " << row.body;
    }
}

}  // namespace
}  // namespace tandrel
