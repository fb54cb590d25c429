#include "helper/action.h"

#include <fmt/format.h>

#include "helper/owner_watch.h"

namespace tandrel {
namespace {

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
    const auto reply = [&] {
        const OwnerWatch watch(call);
        auto result = postToEngine(path, body, call.limits());
        isOwnerAsked = watch.isOwnerAsked();
        return result;
    }();
    // From its end on: what the pointer's own way there changes on the screen is not the answer.
    if (reply) call.memory.acted(millisecondsNow());
    if (reply || reply.error().status != kTimedOut || systemClock().now() < call.deadline) {
        return reply;
    }
    return fail(outOfTime(call, isOwnerAsked), kTimedOut);
}

}  // namespace tandrel
