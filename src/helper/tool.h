#pragma once

#include <functional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>

#include "base/clock.h"
#include "base/json.h"
#include "base/result.h"
#include "helper/engine_api.h"
#include "helper/parameters.h"
#include "helper/screen_memory.h"

namespace tandrel {

struct CallTimes {
    // From the request's arrival to its answer. Apps give up at 60 s, some of them for good.
    Duration longest = std::chrono::seconds(54);
    // How often the engine is asked whether the owner is being asked.
    Duration betweenStatus = std::chrono::seconds(1);
};

// How far a call is, for the app's own display.
struct Progress {
    double done = 0;
    double total = 0;
    std::string message;
};

// One call of a tool, its arguments checked.
struct ToolCall {
    const Json& arguments;
    ScreenMemory& memory;
    CallTimes times;
    std::stop_token stop;                           // the app no longer wants the answer
    TimePoint deadline;                             // of the answer
    std::function<void(const Progress&)> progress;  // any thread; empty when the app did not ask

    // Bounds of a request to the engine that ends with the call.
    ClientOptions limits() const {
        return {.timeout = deadline - systemClock().now(), .stop = stop};
    }
};

// What an app may conclude about a tool before it lets the assistant use it.
struct ToolHints {
    bool readOnly = false;
    bool destructive = false;  // what it does on the phone may not be undone
    bool idempotent = false;   // doing it twice is as good as once
    bool openWorld = false;    // it may reach beyond the phone: send, buy, call
};

struct Tool {
    std::string_view name;
    std::string_view title;
    std::string_view description;
    std::span<const Parameter> parameters;
    ToolHints hints;
    // The content blocks of the answer, or the sentence that says why there are none.
    Result<Json> (*run)(const ToolCall& call);
};

Json textBlock(std::string text);
// `data` is base 64.
Json imageBlock(std::string data, std::string mimeType);

// The tool as the app's list shows it.
Json toolJson(const Tool& tool);

}  // namespace tandrel
