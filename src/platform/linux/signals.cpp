#include "platform/linux/signals.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include <fmt/format.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>

#include "base/file.h"
#include "base/log.h"

namespace tandrel {
namespace {

bool isIgnored(int signal) {
    struct sigaction action{};
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

StopSignals::StopSignals() {
    ::sigemptyset(&signals_);
    ::sigaddset(&signals_, SIGINT);
    ::sigaddset(&signals_, SIGTERM);
    if (!isIgnored(SIGHUP)) ::sigaddset(&signals_, SIGHUP);
    ::pthread_sigmask(SIG_BLOCK, &signals_, &previousMask_);
    std::signal(SIGPIPE, SIG_IGN);
}

StopSignals::~StopSignals() {
    if (thread_.joinable()) {
        ::eventfd_write(end_.get(), 1);
        thread_.join();
    }
    ::pthread_sigmask(SIG_SETMASK, &previousMask_, nullptr);
}

Result<void> StopSignals::deliver(std::function<void()> stop) {
    arrivals_ = FileDescriptor(::signalfd(-1, &signals_, SFD_CLOEXEC | SFD_NONBLOCK));
    end_ = FileDescriptor(::eventfd(0, EFD_CLOEXEC));
    if (!arrivals_ || !end_) {
        return fail(fmt::format("can't listen for signals: {}", systemError(errno)));
    }
    thread_ = std::thread([this, stop = std::move(stop)] { watch(stop); });
    pthread_setname_np(thread_.native_handle(), "signals");
    return {};
}

void StopSignals::watch(const std::function<void()>& stop) const {
    bool asked = false;
    std::array<pollfd, 2> sources{pollfd{arrivals_.get(), POLLIN, 0},
                                  pollfd{end_.get(), POLLIN, 0}};
    while (true) {
        if (::poll(sources.data(), sources.size(), -1) < 0 && errno != EINTR) return;
        if (sources[1].revents != 0) return;
        signalfd_siginfo arrived{};
        if (::read(arrivals_.get(), &arrived, sizeof arrived) != sizeof arrived) continue;
        const int number = static_cast<int>(arrived.ssi_signo);
        if (asked) {
            log(fmt::format("second signal ({}): ending at once", ::strsignal(number)));
            ::_exit(128 + number);
        }
        asked = true;
        stop();
    }
}

}  // namespace tandrel
