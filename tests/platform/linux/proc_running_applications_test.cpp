#include "platform/linux/proc_running_applications.h"

#include <algorithm>
#include <csignal>
#include <filesystem>

#include <gtest/gtest.h>
#include <unistd.h>

#include "support/child_program.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

// Real programs under the names that are looked for. The machine may run others of these names, so
// a test looks at its own only.
class RunningApplicationsTest : public testing::Test {
 protected:
    std::string copyOf(const char* program, const char* name) {
        const auto copy = folder_.path() / name;
        std::filesystem::copy_file(program, copy, std::filesystem::copy_options::skip_existing);
        return copy;
    }
    std::string sleeper(const char* name) { return copyOf("/bin/sleep", name); }

    std::optional<RunningApplication> find(const ChildProgram& program) {
        const auto all = applications_.others();
        const auto found = std::ranges::find(all, program.pid(), &RunningApplication::pid);
        return found == all.end() ? std::nullopt : std::optional(*found);
    }

    TemporaryFolder folder_;
    ProcRunningApplications applications_;
};

TEST_F(RunningApplicationsTest, KnowsApplicationsByTheirExecutable) {
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"tandrel-app", "Tandrel", "com.mossgate.tandrel"},
        {"tandrel-mirror", "Tandrel Mirror", "com.mossgate.tandrel-mirror"},
        {"pocketlink", "PocketLink", "ai.far-reach.pocketlink"},
    };
    for (const auto& [executable, name, bundleIdentifier] : rows) {
        const std::string file = sleeper(executable);
        const ChildProgram program({file, "60"}, {});
        const auto found = find(program);
        ASSERT_TRUE(found) << executable;
        EXPECT_EQ(found->name, name);
        EXPECT_EQ(found->bundleIdentifier, bundleIdentifier);
        std::filesystem::remove(file);
        EXPECT_TRUE(find(program)) << "its file was replaced while it runs";
    }
    for (const char* other : {"tandrel", "tandrel-app2", "Tandrel-app"}) {
        EXPECT_FALSE(find(ChildProgram({sleeper(other), "60"}, {}))) << other;
    }
}

// The second one gives itself a name that would shift the fields after it.
TEST_F(RunningApplicationsTest, ListsInOrderOfStart) {
    const ChildProgram first({sleeper("pocketlink"), "60"}, {});
    ChildProgram second({copyOf("/usr/bin/perl", "tandrel-app"), "-e",
                         "$| = 1; $0 = ') 0 0 ('; print 'ready'; sleep 60"},
                        {});
    const ChildProgram third({sleeper("tandrel-mirror"), "60"}, {});
    ASSERT_TRUE(second.awaitOutput("ready"));
    const std::vector<int> ours = {first.pid(), second.pid(), third.pid()};
    std::vector<int> order;
    for (const auto& one : applications_.others()) {
        if (std::ranges::count(ours, one.pid) > 0) order.push_back(one.pid);
    }
    EXPECT_EQ(order, ours);
}

TEST_F(RunningApplicationsTest, LeavesOutOtherUsers) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can start another user's program";
    std::filesystem::permissions(folder_.path(), std::filesystem::perms::all);
    ChildProgram program(
        {"/usr/bin/setpriv", "--reuid=65534", "--clear-groups",
         copyOf("/usr/bin/perl", "tandrel-app"), "-e", "$| = 1; print 'ready'; sleep 60"},
        {});
    ASSERT_TRUE(program.awaitOutput("ready"));
    EXPECT_FALSE(find(program));
}

TEST_F(RunningApplicationsTest, EndsWhatItWasAskedToEnd) {
    ChildProgram asked({sleeper("tandrel-app"), "60"}, {});
    EXPECT_TRUE(applications_.terminate(*find(asked)));
    EXPECT_EQ(asked.wait(), -SIGTERM);
    ChildProgram forced({sleeper("tandrel-app"), "60"}, {});
    EXPECT_TRUE(applications_.forceTerminate(*find(forced)));
    EXPECT_EQ(forced.wait(), -SIGKILL);
    EXPECT_TRUE(applications_.terminate({forced.pid(), "Tandrel", "com.mossgate.tandrel"}))
        << "it has ended already";
}

TEST_F(RunningApplicationsTest, DoesNotTouchAProgramThatTookOverTheNumber) {
    ChildProgram bystander({sleeper("bystander"), "60"}, {});
    ChildProgram otherOfOurs({sleeper("pocketlink"), "60"}, {});
    for (const int pid : {bystander.pid(), otherOfOurs.pid()}) {
        EXPECT_TRUE(applications_.forceTerminate({pid, "Tandrel", "com.mossgate.tandrel"}));
    }
    bystander.signal(SIGUSR1);
    otherOfOurs.signal(SIGUSR1);
    EXPECT_EQ(bystander.wait(), -SIGUSR1);
    EXPECT_EQ(otherOfOurs.wait(), -SIGUSR1);
}

}  // namespace
}  // namespace tandrel
