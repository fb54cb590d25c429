#pragma once

#include <functional>
#include <map>
#include <optional>
#include <stop_token>
#include <string>

#include "base/mutex.h"
#include "helper/line_writer.h"
#include "helper/protocol.h"
#include "helper/tools.h"
#include "helper/worker_threads.h"

namespace tandrel {

// Takes the answer to one message, once; none when it is to stay unanswered. Any thread.
using Answer = std::function<void(std::optional<Json> reply)>;

// The calls of tools that are under way: started by one thread, answered as they finish.
class Calls {
 public:
    // `writer` and `version`, this program's, outlive this.
    Calls(LineWriter& writer, std::string_view version, CallTimes times)
        : writer_(writer), version_(version), times_(times) {}
    // Stops.
    ~Calls() { stop(); }
    Calls(const Calls&) = delete;
    Calls& operator=(const Calls&) = delete;

    struct Request {
        Json id;
        Era era = Era::handshake;
        const Tool* tool = nullptr;
        Json arguments;
        Json progressToken;  // null without one
    };
    // Answers now or later. The error is for an `id` that is under way.
    RpcResult<void> start(Request request, const Answer& answer);

    // The app no longer wants the answer: what waits for it ends, an open question to the owner is
    // withdrawn, and nothing is answered. Unknown ids are passed over.
    void cancel(const Json& id);

    // Ends what is under way and answers it so.
    void stop();

 private:
    struct UnderWay {
        std::stop_source stop;
        bool isCancelled = false;
    };

    Json run(const Request& request, const std::stop_token& stop, TimePoint deadline);
    Result<Json> content(const Request& request, const std::stop_token& stop, TimePoint deadline);
    void tellProgress(const Json& token, const Progress& progress);
    // Whether the app still wants the answer.
    bool finish(const std::string& key);

    LineWriter& writer_;
    const std::string_view version_;
    const CallTimes times_;
    ScreenMemory memory_;
    Mutex mutex_;
    std::map<std::string, UnderWay> underWay_ OWNED_BY(mutex_);
    bool isStopping_ OWNED_BY(mutex_) = false;
    WorkerThreads threads_;  // last, so that it stops first
};

}  // namespace tandrel
