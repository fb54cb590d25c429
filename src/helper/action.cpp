#include "helper/action.h"

#include <algorithm>

#include <fmt/format.h>

#include "helper/owner_watch.h"

namespace tandrel {
namespace {

// A guarded action is sent only once the owner has answered, so that only the end of a long call
// counts.
constexpr double kLongestReach = 1000;

std::string outOfTime(const ToolCall& call, bool isOwnerAsked) {
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(call.times.longest).count();
    if (isOwnerAsked) {
        return fmt::format(
            "Not done: the owner didn't answer the payment request on their Mac "
            "within {} seconds, so it counts as a no. Repeat the action only if the "
            "owner asks you to.",
            seconds);
    }
    return fmt::format(
        "Tandrel has not finished this within {} seconds, and the call was given up. "
        "It may have been done in part: look at the screen before you repeat it.",
        seconds);
}

}  // namespace

Result<Json> act(const ToolCall& call, std::string_view path, const Json& body) {
    bool isOwnerAsked = false;
    const double start = millisecondsNow();
    const auto reply = [&] {
        const OwnerWatch watch(call);
        auto result = postToEngine(path, body, call.limits());
        isOwnerAsked = watch.isOwnerAsked();
        return result;
    }();
    if (reply) call.memory.acted(std::max(start, millisecondsNow() - kLongestReach));
    if (reply || reply.error().status != kTimedOut || systemClock().now() < call.deadline) {
        return reply;
    }
    return fail(outOfTime(call, isOwnerAsked), kTimedOut);
}

}  // namespace tandrel
