#include "platform/linux/login1_power.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

#include "platform/linux/linux_main_loop.h"
#include "platform/linux/private_bus.h"

namespace tandrel {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

// The manager's end of an inhibitor that it handed out.
struct Inhibitor {
    std::vector<std::string> asked;  // what, who, mode
    FileDescriptor end;

    // Whether the other end closes within `patience`.
    bool isReleased(std::chrono::milliseconds patience = 10s) const {
        pollfd other{end.get(), 0, 0};
        return ::poll(&other, 1, static_cast<int>(patience.count())) == 1;
    }
};

// The login manager as far as sleep goes.
class FakeLogin1 {
 public:
    explicit FakeLogin1(const std::string& address)
        : bus_(sdbus::createSessionBusConnectionWithAddress(address)),
          object_(sdbus::createObject(*bus_, "/org/freedesktop/login1")) {
        object_->registerMethod("Inhibit")
            .onInterface(kInterface)
            .implementedAs([this](const std::string& what, const std::string& who,
                                  const std::string&,
                                  const std::string& mode) { return inhibit({what, who, mode}); });
        object_->registerSignal("PrepareForSleep").onInterface(kInterface).withParameters<bool>();
        object_->finishRegistration();
        bus_->requestName("org.freedesktop.login1");
        bus_->enterEventLoopAsync();
    }
    ~FakeLogin1() { bus_->leaveEventLoop(); }
    FakeLogin1(const FakeLogin1&) = delete;
    FakeLogin1& operator=(const FakeLogin1&) = delete;

    void prepareForSleep(bool going) {
        object_->emitSignal("PrepareForSleep").onInterface(kInterface).withArguments(going);
    }

    // The next one that is asked for; nothing asked when none comes.
    Inhibitor awaitInhibitor() {
        std::unique_lock lock(mutex_);
        if (!changed_.wait_for(lock, 10s, [this] { return !given_.empty(); })) return {};
        Inhibitor first = std::move(given_.front());
        given_.pop_front();
        return first;
    }

 private:
    static constexpr const char* kInterface = "org.freedesktop.login1.Manager";

    sdbus::UnixFd inhibit(std::vector<std::string> asked) {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) throw sdbus::Error("test.NoPipe", "no pipe");
        std::lock_guard lock(mutex_);
        given_.push_back({std::move(asked), FileDescriptor(ends[0])});
        changed_.notify_all();
        return {ends[1], sdbus::adopt_fd};
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Inhibitor> given_;  // under mutex_
    std::unique_ptr<sdbus::IConnection> bus_;
    std::unique_ptr<sdbus::IObject> object_;
};

class Login1PowerTest : public testing::Test {
 protected:
    PrivateBus bus_;
    LinuxMainLoop loop_;
};

TEST_F(Login1PowerTest, TheComputerWaitsUntilSleepIsPrepared) {
    FakeLogin1 manager(bus_.address());
    Login1Power power(loop_);
    const Inhibitor inhibitor = manager.awaitInhibitor();
    EXPECT_THAT(inhibitor.asked, ElementsAre("sleep", "Tandrel", "delay"));
    bool releasedTooSoon = true;
    power.setOnSleep([&] {
        releasedTooSoon = inhibitor.isReleased(0ms);
        loop_.quit(0);
    });
    manager.prepareForSleep(true);
    loop_.run();
    EXPECT_FALSE(releasedTooSoon);
    EXPECT_TRUE(inhibitor.isReleased());
}

TEST_F(Login1PowerTest, AfterWakingItHoldsTheNextSleepUp) {
    FakeLogin1 manager(bus_.address());
    Login1Power power(loop_);
    std::string seen;
    power.setOnSleep([&] { seen += 's'; });
    power.setOnWake([&] {
        seen += 'w';
        loop_.quit(0);
    });
    const Inhibitor first = manager.awaitInhibitor();
    manager.prepareForSleep(true);
    manager.prepareForSleep(false);
    loop_.run();
    EXPECT_EQ(seen, "sw");
    const Inhibitor second = manager.awaitInhibitor();
    EXPECT_THAT(second.asked, ElementsAre("sleep", "Tandrel", "delay"));
    EXPECT_FALSE(second.isReleased(0ms));
}

TEST_F(Login1PowerTest, FindsAManagerThatStartsLaterOrAnew) {
    Login1Power power(loop_);
    for (int start = 0; start < 2; ++start) {
        FakeLogin1 manager(bus_.address());
        EXPECT_THAT(manager.awaitInhibitor().asked, ElementsAre("sleep", "Tandrel", "delay"));
        power.setOnWake([&] { loop_.quit(start); });
        manager.prepareForSleep(false);
        EXPECT_EQ(loop_.run(), start);
    }
}

TEST_F(Login1PowerTest, GivesTheInhibitorBackAtTheEnd) {
    FakeLogin1 manager(bus_.address());
    Inhibitor inhibitor;
    {
        Login1Power power(loop_);
        inhibitor = manager.awaitInhibitor();
    }
    EXPECT_TRUE(inhibitor.isReleased());
}

TEST_F(Login1PowerTest, ABusThatIsMissingOrGoesAwayHarmsNothing) {
    const Login1Power connected(loop_);
    bus_.stop();
    const Login1Power after(loop_);
    const EnvironmentVariable nowhere("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    const Login1Power without(loop_);
    loop_.post([this] { loop_.quit(3); });
    EXPECT_EQ(loop_.run(), 3);
}

}  // namespace
}  // namespace tandrel
