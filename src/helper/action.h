#pragma once

#include <string_view>

#include "helper/tool.h"

namespace tandrel {

// Sends an action to the engine and waits for its answer, which may be the owner's, as long as the
// call has time. When time is over the request is closed, which withdraws an open question.
// An action that was done is remembered as the last one.
Result<Json> act(const ToolCall& call, std::string_view path, const Json& body);

}  // namespace tandrel
