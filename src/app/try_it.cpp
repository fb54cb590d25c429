#include "app/try_it.h"

#include <fmt/format.h>

#include "app/status_explain.h"
#include "base/base64.h"
#include "http/client.h"
#include "http/target.h"
#include "image/image_reader.h"

namespace tandrel {
namespace {

constexpr Duration kTryPatience = std::chrono::seconds(20);
constexpr Duration kBetweenHomes = std::chrono::milliseconds(400);

std::vector<std::string> textsOf(const Json& list) {
    std::vector<std::string> texts;
    for (const Json& item : list) {
        if (item.is_string()) texts.push_back(item.get<std::string>());
        if (auto text = textMember(item, "text")) texts.push_back(std::move(*text));
    }
    return texts;
}

// A JSON reply that carries the picture in `member` as base 64 and the texts as "ocr".
std::optional<TryIt::Frame> frameOf(const Json& reply, const char* member) {
    const auto bytes = fromBase64(textMember(reply, member).value_or(""));
    if (!bytes || bytes->empty()) return std::nullopt;
    auto image = decodeImage(*bytes);
    if (!image) return std::nullopt;
    return TryIt::Frame{*std::move(image), textsOf(reply.value("ocr", Json::array()))};
}

}  // namespace

std::optional<TryIt::Problem> TryIt::act(const std::string& path, Json body) const {
    if (!device_.empty()) body["device"] = device_;
    const auto reply =
        httpPost(place_.engine, path, body, {.timeout = kTryPatience, .stop = stop_});
    if (!reply) return Explain::actionError("could not connect", 0);
    if (reply->status == 200) return std::nullopt;
    return Explain::actionError(textMember(reply->json(), "error").value_or(""), reply->status);
}

std::optional<TryIt::Problem> TryIt::home() const {
    if (auto problem = act("/home", Json::object())) return problem;
    wait(kBetweenHomes);
    return act("/key", {{"key", "h"}, {"modifiers", {"cmd"}}});
}

TryIt::From TryIt::preferred(const AppModelInputs& inputs) {
    const bool airplay =
        inputs.screenSource == ScreenSource::airplay || inputs.linkChoice == LinkChoice::airplay;
    return airplay ? From::airplay : From::cable;
}

std::optional<TryIt::Frame> TryIt::frame(From from, int maxEdge, Text text) const {
    return from == From::airplay ? airplayFrame(maxEdge, text) : cableFrame(maxEdge, text);
}

std::optional<TryIt::Frame> TryIt::cableFrame(int maxEdge, Text text) const {
    const std::string device = device_.empty() ? "" : "&device=" + percentEncoded(device_);
    const bool reads = text == Text::read;
    const auto reply =
        httpGet(place_.engine,
                fmt::format("{}?maxEdge={}{}", reads ? "/look" : "/screenshot", maxEdge, device),
                {.timeout = kTryPatience, .stop = stop_});
    if (!reply || reply->status != 200) return std::nullopt;
    if (reads) return frameOf(reply->json(), "image");
    auto image = decodeImage(reply->body);
    if (!image) return std::nullopt;
    return Frame{*std::move(image), {}};
}

std::optional<TryIt::Frame> TryIt::airplayFrame(int maxEdge, Text text) const {
    const bool reads = text == Text::read;
    const auto reply = httpGet(
        place_.airplay, fmt::format("/frame.png?maxEdge={}{}", maxEdge, reads ? "&ocr=1" : ""),
        {.timeout = kTryPatience, .stop = stop_});
    if (!reply || reply->status != 200) return std::nullopt;
    if (reads) return frameOf(reply->json(), "data");
    auto image = decodeImage(reply->body);
    if (!image) return std::nullopt;
    return Frame{*std::move(image), {}};
}

bool TryIt::wait(Duration duration) const { return clock_.sleepFor(duration, stop_); }

}  // namespace tandrel
