#include "helper/action.h"
#include "helper/tool_functions.h"

namespace tandrel {

Result<Json> match(const ToolCall& call) {
    return Json::array({ textBlock(dumpJson(TRY(act(call, "/match", call.arguments)))) });
}

Result<Json> pair(const ToolCall& call) {
    return Json::array({ textBlock(dumpJson(TRY(act(call, "/pair", call.arguments)))) });
}

}  // namespace tandrel
