#include "engine/other_engines.h"

#include <algorithm>
#include <array>

#include "base/json.h"
#include "http/client.h"

namespace tandrel {
namespace {

constexpr Duration kAnswerTime = std::chrono::milliseconds(1200);

constexpr std::array<std::string_view, 3> kEngineBundles = {
    "ai.far-reach.pocketlink",
    "com.mossgate.tandrel-mirror",
    "com.mossgate.tandrel",
};

}  // namespace

std::string answererName(int status, const std::string& body) {
    if (status == 403) return "another user's Tandrel";
    const auto json = parseJson(body);
    if (!json || !json->is_object()) return "another app";
    if (const auto app = textMember(*json, "app")) {
        return *app == "tandrel-mirror" ? "Tandrel Mirror" : *app;
    }
    return json->contains("bluetooth") ? "PocketLink" : "another app";
}

std::optional<std::string> whoAnswers(std::uint16_t port) {
    const auto reply = httpGet(LoopbackUrl::ofPort(port), "/status", {.timeout = kAnswerTime});
    if (!reply) return std::nullopt;
    return answererName(reply->status, toText(reply->body));
}

std::vector<std::string> quitOtherEngines(RunningApplications& applications) {
    std::vector<std::string> names;
    for (const RunningApplication& application : applications.others()) {
        if (std::ranges::count(kEngineBundles, application.bundleIdentifier) == 0) continue;
        if (!applications.terminate(application)) applications.forceTerminate(application);
        names.push_back(application.name);
    }
    return names;
}

}  // namespace tandrel
