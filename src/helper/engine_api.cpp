#include "helper/engine_api.h"

#include <fmt/format.h>

#include "base/paths.h"
#include "helper/engine_url.h"

namespace tandrel {
namespace {

std::string howToStart(const LoopbackUrl& url) {
    const auto application = executablePath().parent_path() / "tandrel-app";
    std::error_code error;
    const bool isThere = std::filesystem::exists(application, error);
    return fmt::format(
        "Tandrel is not running on this computer: nothing answers at {}. Ask the owner to start it "
        "(open Tandrel from the applications menu, or run {}), then repeat this call; the "
        "connection comes back by itself.",
        url.text(), isThere ? application.string() : "tandrel-app");
}

std::unexpected<Error> noReply(const Error& error, const LoopbackUrl& url) {
    switch (error.status) {
        case kNotReachable:
            return fail(howToStart(url), error.status);
        case kBadReply:
            return fail(fmt::format("Whatever answers at {} is not Tandrel ({}). Ask the owner to "
                                    "look at TANDREL_ENGINE_PORT and TANDREL_ENGINE_URL.",
                                    url.text(), error.message),
                        error.status);
        default:
            return std::unexpected(error);
    }
}

Result<ClientResponse> accepted(Result<ClientResponse> reply, const LoopbackUrl& url) {
    if (!reply) return noReply(reply.error(), url);
    if (reply->status == 200) return reply;
    if (auto sentence = textMember(reply->json(), "error")) {
        return fail(*std::move(sentence), reply->status);
    }
    return fail(fmt::format("Whatever answers at {} refused this with status {} and no reason.",
                            url.text(), reply->status),
                reply->status);
}

bool isPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '.' || c == '~';
}

}  // namespace

Result<Json> jsonOf(const ClientResponse& reply) {
    const std::string_view text(reinterpret_cast<const char*>(reply.body.data()),
                                reply.body.size());
    auto json = parseJson(text);
    if (!json || !json->is_object()) {
        return fail("Tandrel's answer could not be understood: it is not a JSON object.",
                    kBadReply);
    }
    return *std::move(json);
}

Result<ClientResponse> getFromEngine(std::string_view target, const ClientOptions& options) {
    const LoopbackUrl url = TRY(engineUrl());
    return accepted(httpGet(url, target, options), url);
}

Result<Json> getJsonFromEngine(std::string_view target, const ClientOptions& options) {
    return jsonOf(TRY(getFromEngine(target, options)));
}

Result<Json> postToEngine(std::string_view target, const Json& body, const ClientOptions& options) {
    const LoopbackUrl url = TRY(engineUrl());
    return jsonOf(TRY(accepted(httpPost(url, target, body, options), url)));
}

QueryText& QueryText::add(std::string_view name, std::string_view value) {
    text_ += fmt::format("{}{}=", text_.empty() ? '?' : '&', name);
    for (const char c : value) {
        if (isPlain(c)) {
            text_ += c;
        } else {
            text_ += fmt::format("%{:02X}", static_cast<unsigned char>(c));
        }
    }
    return *this;
}

}  // namespace tandrel
