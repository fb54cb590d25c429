#include "aiconnect/claude_settings.h"

#include <fmt/format.h>

#include "base/json.h"

namespace tandrel {
namespace {

constexpr const char* kServers = "mcpServers";
constexpr const char* kServer = "tandrel";
constexpr int kIndent = 2;

}  // namespace

Link claudeLink(std::string_view text, std::string_view command) {
    const auto settings = parseJson(text);
    if (!settings || !settings->is_object()) return Link::notAdded;
    const auto servers = settings->find(kServers);
    if (servers == settings->end() || !servers->is_object()) return Link::notAdded;
    const auto server = servers->find(kServer);
    if (server == servers->end()) return Link::notAdded;
    return textMember(*server, "command") == command ? Link::addedHere : Link::addedElsewhere;
}

std::string claudeSnippet(std::string_view command) {
    return fmt::format(R"("{}": {{ "command": {}, "args": ["mcp"] }})", kServer,
                       dumpJson(std::string(command)));
}

Result<std::string> mergeClaude(std::string_view text, std::string_view command) {
    OrderedJson settings = TRY(parseOrderedJson(text));
    if (!settings.is_object()) return fail("it is not a JSON object");
    OrderedJson& servers = settings[kServers];
    if (!servers.is_object()) servers = OrderedJson::object();
    servers[kServer] = OrderedJson{{"command", command}, {"args", OrderedJson::array({"mcp"})}};
    return settings.dump(kIndent, ' ', false, OrderedJson::error_handler_t::replace) + "\n";
}

}  // namespace tandrel
