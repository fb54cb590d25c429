#include "helper/tool.h"

namespace tandrel {

Json textBlock(std::string text) { return {{"type", "text"}, {"text", std::move(text)}}; }

Json imageBlock(std::string data, std::string mimeType) {
    return {{"type", "image"}, {"data", std::move(data)}, {"mimeType", std::move(mimeType)}};
}

Json toolJson(const Tool& tool) {
    return {{"name", tool.name},
            {"title", tool.title},
            {"description", tool.description},
            {"inputSchema", inputSchema(tool.parameters)},
            {"annotations",
             {{"title", tool.title},
              {"readOnlyHint", tool.hints.readOnly},
              {"destructiveHint", tool.hints.destructive},
              {"idempotentHint", tool.hints.idempotent},
              {"openWorldHint", tool.hints.openWorld}}}};
}

}  // namespace tandrel
