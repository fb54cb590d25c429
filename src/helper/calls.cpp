#include "helper/calls.h"

#include <memory>

namespace tandrel {
namespace {

constexpr const char* kTooMany =
    "Too many calls are under way. Wait for their answers, then repeat this one.";
// It was never sent, so that nothing can have happened.
constexpr const char* kTooLate =
    "Not done: too many other calls were under way before this one. Repeat it.";
constexpr const char* kClosed =
    "The app closed the connection while this was under way. It may have been done in part: look "
    "at the screen before you repeat it.";

Json callResult(Result<Json> content) {
    if (content) return {{"content", *std::move(content)}, {"isError", false}};
    return {{"content", Json::array({textBlock(content.error().message)})}, {"isError", true}};
}

}  // namespace

RpcResult<void> Calls::start(Request request, const Answer& answer) {
    const std::string key = dumpJson(request.id);
    std::stop_token stop;
    {
        MutexLock lock(mutex_);
        const auto [entry, isNew] = underWay_.try_emplace(key);
        if (!isNew) {
            return std::unexpected(RpcError{
                kInvalidRequest, "Invalid Request: a request with this id is still under way"});
        }
        if (isStopping_) entry->second.stop.request_stop();
        stop = entry->second.stop.get_token();
    }
    const TimePoint deadline = systemClock().now() + times_.longest;
    auto held = std::make_shared<const Request>(std::move(request));
    WorkerThreads::Task task = [this, held, key, stop, deadline, answer] {
        Json reply = run(*held, stop, deadline);
        answer(finish(key) ? std::optional(std::move(reply)) : std::nullopt);
    };
    if (!threads_.post(task)) {
        finish(key);
        Json result = callResult(fail(kTooMany));
        complete(result, held->era, version_);
        answer(resultReply(held->id, std::move(result)));
    }
    return {};
}

Json Calls::run(const Request& request, const std::stop_token& stop, TimePoint deadline) {
    Json result = callResult(content(request, stop, deadline));
    complete(result, request.era, version_);
    return resultReply(request.id, std::move(result));
}

Result<Json> Calls::content(const Request& request, const std::stop_token& stop,
                            TimePoint deadline) {
    const Json arguments =
        TRY(checkArguments(request.tool->name, request.tool->parameters, request.arguments));
    if (stop.stop_requested()) return fail(kClosed);
    if (systemClock().now() >= deadline) return fail(kTooLate);
    ToolCall call{.arguments = arguments,
                  .memory = memory_,
                  .times = times_,
                  .stop = stop,
                  .deadline = deadline,
                  .progress = {}};
    if (!request.progressToken.is_null()) {
        call.progress = [this, &request](const Progress& progress) {
            tellProgress(request.progressToken, progress);
        };
    }
    auto blocks = request.tool->run(call);
    if (!blocks && stop.stop_requested()) return fail(kClosed);
    return blocks;
}

void Calls::tellProgress(const Json& token, const Progress& progress) {
    writer_.write(notificationOf("notifications/progress", {{"progressToken", token},
                                                            {"progress", progress.done},
                                                            {"total", progress.total},
                                                            {"message", progress.message}}));
}

bool Calls::finish(const std::string& key) {
    MutexLock lock(mutex_);
    const auto entry = underWay_.find(key);
    const bool isWanted = !entry->second.isCancelled;
    underWay_.erase(entry);
    return isWanted;
}

void Calls::cancel(const Json& id) {
    std::stop_source stop(std::nostopstate);
    {
        MutexLock lock(mutex_);
        const auto entry = underWay_.find(dumpJson(id));
        if (entry == underWay_.end()) return;
        entry->second.isCancelled = true;
        stop = entry->second.stop;
    }
    stop.request_stop();
}

void Calls::stop() {
    std::vector<std::stop_source> sources;
    {
        MutexLock lock(mutex_);
        isStopping_ = true;
        for (auto& [key, call] : underWay_) sources.push_back(call.stop);
    }
    for (std::stop_source& source : sources) source.request_stop();
}

}  // namespace tandrel
