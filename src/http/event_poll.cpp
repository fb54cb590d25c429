#include "http/event_poll.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace tandrel {
namespace {

bool add(const Socket& poll, const Socket& source, std::uint64_t key, std::uint32_t flags) {
    epoll_event event{};
    event.events = flags;
    event.data.u64 = key;
    return ::epoll_ctl(poll.fd(), EPOLL_CTL_ADD, source.fd(), &event) == 0;
}

std::uint32_t flagsFor(Watch watch) {
    switch (watch) {
        case Watch::read:
            return EPOLLIN | EPOLLRDHUP;
        case Watch::write:
            return EPOLLOUT;
        case Watch::peerClose:
            return EPOLLRDHUP;
    }
    return 0;
}

}  // namespace

EventPoll::EventPoll(Socket poll, Socket wake, Socket timer)
    : poll_(std::move(poll)), wake_(std::move(wake)), timer_(std::move(timer)) {}

Result<std::unique_ptr<EventPoll>> EventPoll::open() {
    Socket poll(::epoll_create1(EPOLL_CLOEXEC));
    if (!poll) return systemFailure();
    Socket wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!wake) return systemFailure();
    Socket timer(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
    if (!timer) return systemFailure();
    // The wake stays ready for every thread; a tick is for one.
    if (!add(poll, wake, kWake, EPOLLIN)) return systemFailure();
    if (!add(poll, timer, kTick, EPOLLIN | EPOLLET)) return systemFailure();
    return std::unique_ptr<EventPoll>(
        new EventPoll(std::move(poll), std::move(wake), std::move(timer)));
}

bool EventPoll::arm(int fd, std::uint64_t key, Watch watch, Known known) {
    epoll_event event{};
    event.events = flagsFor(watch) | EPOLLONESHOT;
    event.data.u64 = key;
    const int operation = known == Known::yes ? EPOLL_CTL_MOD : EPOLL_CTL_ADD;
    return ::epoll_ctl(poll_.fd(), operation, fd, &event) == 0;
}

std::optional<std::uint64_t> EventPoll::wait(Duration timeout) {
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(timeout).count();
    epoll_event event{};
    const int count = ::epoll_wait(poll_.fd(), &event, 1, static_cast<int>(milliseconds));
    if (count <= 0) return std::nullopt;
    const std::uint64_t key = event.data.u64;  // packed, so no reference may be bound to it
    return key;
}

void EventPoll::tickAfter(Duration delay) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(delay);
    itimerspec time{};
    time.it_value.tv_sec = seconds.count();
    time.it_value.tv_nsec = (delay - seconds).count();
    ::timerfd_settime(timer_.fd(), 0, &time, nullptr);
}

void EventPoll::wakeAll() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(wake_.fd(), &one, sizeof one);
}

}  // namespace tandrel
