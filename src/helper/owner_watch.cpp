#include "helper/owner_watch.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>
#include <pthread.h>

namespace tandrel {
namespace {

constexpr Duration kStatusPatience = std::chrono::seconds(2);

}  // namespace

OwnerWatch::OwnerWatch(const ToolCall& call)
    : call_(call), thread_([this](const std::stop_token& stop) { watch(stop); }) {}

OwnerWatch::~OwnerWatch() {
    thread_.request_stop();
    thread_.join();
}

void OwnerWatch::watch(const std::stop_token& stop) {
    ::pthread_setname_np(::pthread_self(), "tandrel.owner");
    while (systemClock().sleepFor(call_.times.betweenStatus, stop)) {
        const auto status =
            getJsonFromEngine("/status", {.timeout = kStatusPatience, .stop = stop});
        if (!status) continue;
        const auto secondsLeft = numberMember(*status, "asking");
        isOwnerAsked_ = secondsLeft.has_value();
        if (secondsLeft && !stop.stop_requested()) tell(*secondsLeft);
    }
}

void OwnerWatch::tell(double secondsLeft) {
    if (!call_.progress) return;
    const double left = std::clamp(std::ceil(secondsLeft), 0.0, 3600.0);
    const double waited = toSeconds(systemClock().now() - start_);
    call_.progress({.done = waited,
                    .total = waited + left,
                    .message = fmt::format("Waiting for the owner to answer a payment request on "
                                           "this computer: {} s left.",
                                           left)});
}

}  // namespace tandrel
