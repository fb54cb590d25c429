#include "engine/other_engines.h"

#include <gtest/gtest.h>

#include "http/server.h"

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

TEST(OtherEngines, AreAskedOverThePort) {
    HTTPServer server(0, [](const HTTPRequest& request) {
        return HTTPResponse::json({{"app", "asked " + request.path}});
    });
    ASSERT_TRUE(server.start());
    const std::uint16_t port = server.port();
    EXPECT_EQ(whoAnswers(port), "asked /status");
    server.stop();
    EXPECT_EQ(whoAnswers(port), std::nullopt);
}

class FakeApplications final : public RunningApplications {
 public:
    std::vector<RunningApplication> others() override { return running; }
    bool terminate(const RunningApplication& application) override {
        terminated.push_back(application.pid);
        return application.pid != refuses;
    }
    bool forceTerminate(const RunningApplication& application) override {
        forced.push_back(application.pid);
        return true;
    }

    std::vector<RunningApplication> running;
    int refuses = 0;
    std::vector<int> terminated;
    std::vector<int> forced;
};

TEST(OtherEngines, OnlyTheyAreQuitAndByForceWhenTheyRefuse) {
    FakeApplications applications;
    applications.running = {{1, "Mirror", "com.mossgate.tandrel-mirror"},
                            {2, "Editor", "org.example.editor"},
                            {3, "Tandrel", "com.mossgate.tandrel"},
                            {4, "PocketLink", "ai.far-reach.pocketlink"},
                            {5, "Unknown", ""}};
    applications.refuses = 3;
    EXPECT_EQ(quitOtherEngines(applications),
              (std::vector<std::string>{"Mirror", "Tandrel", "PocketLink"}));
    EXPECT_EQ(applications.terminated, (std::vector<int>{1, 3, 4}));
    EXPECT_EQ(applications.forced, (std::vector<int>{3}));
}

}  // namespace
}  // namespace tandrel
