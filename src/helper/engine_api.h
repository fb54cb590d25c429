#pragma once

#include <string>
#include <string_view>

#include "base/json.h"
#include "base/result.h"
#include "http/client.h"

namespace tandrel {

// The engine's HTTP API. Every request looks afresh for the engine, so that one that is started,
// stopped or moved meanwhile is found. Any thread.
//
// An error is a sentence for the assistant: the engine's own, unchanged, where it gave one. Its
// `status` is the engine's, or kTimedOut, kCancelled, kNotReachable or kBadReply where there was no
// reply. `target` is percent-encoded.
Result<ClientResponse> getFromEngine(std::string_view target, const ClientOptions& options);
// The JSON object that a reply holds.
Result<Json> jsonOf(const ClientResponse& reply);
Result<Json> getJsonFromEngine(std::string_view target, const ClientOptions& options);
Result<Json> postToEngine(std::string_view target, const Json& body, const ClientOptions& options);

// "?name=value" or "&name=value" in turn, with everything that must be percent-encoded.
class QueryText {
 public:
    QueryText& add(std::string_view name, std::string_view value);
    const std::string& text() const { return text_; }

 private:
    std::string text_;
};

}  // namespace tandrel
