#pragma once

#include <string>
#include <string_view>

#include "aiconnect/link.h"
#include "base/result.h"

// The settings that both Claude apps keep as JSON: an object "mcpServers" with one object a server.
namespace tandrel {

// How the settings stand to the helper at `command`. Text that is not JSON names nothing.
Link claudeLink(std::string_view text, std::string_view command);

// Our entry as one line, for pasting by hand under "mcpServers".
std::string claudeSnippet(std::string_view command);

// The settings with our entry in them. Every other key and server stays, in its order. The error
// says that the text is not a JSON object.
Result<std::string> mergeClaude(std::string_view text, std::string_view command);

}  // namespace tandrel
