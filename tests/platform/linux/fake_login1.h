#pragma once

#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>

#include "base/file_descriptor.h"
#include "platform/linux/bus_service.h"
#include "support/eventually.h"

namespace tandrel {

// The manager's end of an inhibitor that it handed out.
struct Inhibitor {
    std::vector<std::string> asked;  // what, who, mode
    FileDescriptor end;

    // Whether the other end closes within `patience`.
    bool isReleased(std::chrono::milliseconds patience = std::chrono::seconds(10)) const {
        pollfd other{end.get(), 0, 0};
        return ::poll(&other, 1, static_cast<int>(patience.count())) == 1;
    }
};

// The login manager as far as sleep goes.
class FakeLogin1 {
 public:
    explicit FakeLogin1(const std::string& address) : service_(address, "/org/freedesktop/login1") {
        addMethod(service_.object(), kInterface, "Inhibit",
                  [this](const std::string& what, const std::string& who, const std::string&,
                         const std::string& mode) { return inhibit({what, who, mode}); });
        service_.object()
            .registerSignal("PrepareForSleep")
            .onInterface(kInterface)
            .withParameters<bool>();
        service_.appear("org.freedesktop.login1");
    }

    void prepareForSleep(bool going) {
        service_.object()
            .emitSignal("PrepareForSleep")
            .onInterface(kInterface)
            .withArguments(going);
    }
    // The next one that is asked for; nothing asked when none comes.
    Inhibitor awaitInhibitor() {
        Inhibitor first;
        eventually([&] {
            std::lock_guard lock(mutex_);
            if (given_.empty()) return false;
            first = std::move(given_.front());
            given_.pop_front();
            return true;
        });
        return first;
    }

 private:
    static constexpr const char* kInterface = "org.freedesktop.login1.Manager";

    sdbus::UnixFd inhibit(std::vector<std::string> asked) {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) throw sdbus::Error("test.NoPipe", "no pipe");
        std::lock_guard lock(mutex_);
        given_.push_back({std::move(asked), FileDescriptor(ends[0])});
        return {ends[1], sdbus::adopt_fd};
    }

    std::mutex mutex_;
    std::deque<Inhibitor> given_;  // under mutex_
    BusService service_;
};

}  // namespace tandrel
