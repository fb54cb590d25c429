#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "helper/json_rpc.h"
#include "helper/protocol.h"
#include "helper/tools.h"

using namespace tandrel;

// A message from an app, taken apart as far as the tool that it calls, whose arguments are checked.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto value = parseJson({reinterpret_cast<const char*>(data), size});
    if (!value) return 0;
    const auto message = readMessage(*std::move(value));
    if (!message) return 0;
    (void)eraOf(message->params);
    const auto arguments = message->params.find("arguments");
    if (arguments == message->params.end() || !arguments->is_object()) return 0;
    for (const Tool& tool : tools()) {
        const auto checked = checkArguments(tool.name, tool.parameters, *arguments);
        // What was accepted once is accepted as it came out.
        if (checked && checkArguments(tool.name, tool.parameters, *checked) != checked)
            std::abort();
    }
    return 0;
}
