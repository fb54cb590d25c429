#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "helper/picture.h"
#include "helper/screen_text.h"
#include "helper/tool_functions.h"

namespace tandrel {
namespace {

Json withPicture(Picture picture, std::string text) {
    Json image = imageBlock(std::move(picture.data), std::move(picture.mimeType));
    return Json::array({textBlock(std::move(text)), std::move(image)});
}

std::string milliseconds(double secondsValue) {
    return fmt::format("{:.0f}", std::round(secondsValue * 1000));
}

// A count that comes as a number or as the list of what is counted.
std::size_t countIn(const Json& reply, const char* key) {
    const auto value = reply.find(key);
    if (value != reply.end() && value->is_array()) return value->size();
    return static_cast<std::size_t>(
        std::clamp(numberMember(reply, key).value_or(0), 0.0, 1'000'000.0));
}

// The engine's account of a wait as a sentence.
std::string waitSentence(const Json& reply) {
    const double waited = numberMember(reply, "waited_ms").value_or(0) / 1000;
    const double still = numberMember(reply, "still_ms").value_or(0) / 1000;
    const bool isSettled = boolMember(reply, "settled").value_or(false);
    const std::size_t count = countIn(reply, "changes");
    if (count == 0) return fmt::format("The screen did not change within {:.1f} s.", waited);
    if (!isSettled) {
        return fmt::format(
            "The screen was still changing after {:.1f} s (an animation or a video, perhaps).",
            waited);
    }
    return fmt::format("The screen changed and has been still for {:.1f} s (waited {:.1f} s).",
                       still, waited);
}

}  // namespace

Result<Json> getStatus(const ToolCall& call) {
    return Json::array({ textBlock(dumpJson(TRY(getJsonFromEngine("/status", call.limits())))) });
}

Result<Json> listDevices(const ToolCall& call) {
    return Json::array({ textBlock(dumpJson(TRY(getJsonFromEngine("/devices", call.limits())))) });
}

Result<Json> look(const ToolCall& call) {
    Picture picture = TRY(takePicture(call, PictureKind::look));
    std::string text = captionOf(picture) + screenTextOf(picture);
    return withPicture(std::move(picture), std::move(text));
}

Result<Json> takeScreenshot(const ToolCall& call) {
    Picture picture = TRY(takePicture(call, PictureKind::screenshot));
    std::string text = captionOf(picture);
    return withPicture(std::move(picture), std::move(text));
}

Result<Json> waitUntilSettled(const ToolCall& call) {
    QueryText query;
    query.add("max", milliseconds(numberMember(call.arguments, "longest").value_or(0)))
        .add("quiet", milliseconds(numberMember(call.arguments, "quiet").value_or(0)));
    if (const auto phone = textMember(call.arguments, "device")) query.add("device", *phone);
    const Json reply = TRY(getJsonFromEngine("/settle" + query.text(), call.limits()));
    return Json::array({textBlock(waitSentence(reply))});
}

}  // namespace tandrel
