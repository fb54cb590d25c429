#pragma once

#include "helper/tool.h"

// What the tools do. Each takes checked arguments and gives content blocks.
namespace tandrel {

// looking_tools.cpp
Result<Json> getStatus(const ToolCall& call);
Result<Json> listDevices(const ToolCall& call);
Result<Json> look(const ToolCall& call);
Result<Json> takeScreenshot(const ToolCall& call);
Result<Json> waitUntilSettled(const ToolCall& call);

// acting_tools.cpp
Result<Json> tap(const ToolCall& call);
Result<Json> longPress(const ToolCall& call);
Result<Json> swipe(const ToolCall& call);
Result<Json> movePointer(const ToolCall& call);
Result<Json> nudgePointer(const ToolCall& call);
Result<Json> typeText(const ToolCall& call);
Result<Json> pressKey(const ToolCall& call);
Result<Json> goHome(const ToolCall& call);

// pairing_tools.cpp
Result<Json> match(const ToolCall& call);
Result<Json> pair(const ToolCall& call);

}  // namespace tandrel
