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

std::string rounded(double milliseconds) { return fmt::format("{:.0f}", std::round(milliseconds)); }

// An action this long ago no longer moves the screen.
constexpr double kLongestEffect = 20'000;

// The engine's account of a wait as a sentence.
std::string waitSentence(const Json& reply, bool isSinceAction) {
    const double waited = numberMember(reply, "waited_ms").value_or(0) / 1000;
    const double still = numberMember(reply, "still_ms").value_or(0) / 1000;
    if (numberMember(reply, "changes").value_or(0) == 0) {
        return fmt::format("The screen has not changed for {:.1f} s{}.", still,
                           isSinceAction ? ", since your last action" : "");
    }
    if (boolMember(reply, "settled").value_or(false)) {
        return fmt::format("The screen changed{} and has been still for {:.1f} s.",
                           isSinceAction ? " after your last action" : "", still);
    }
    return fmt::format(
        "The screen was still changing after {:.1f} s (an animation or a video, perhaps).", waited);
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

// Counts from the last action where there was one just before, so that a screen that has answered
// it already needs no more waiting.
Result<Json> waitUntilSettled(const ToolCall& call) {
    const double now = millisecondsNow();
    const double lastAction = call.memory.lastAction();
    const bool isSinceAction = lastAction <= now && now - lastAction <= kLongestEffect;
    const double since = isSinceAction ? lastAction : now;
    const double longest = numberMember(call.arguments, "longest").value_or(0) * 1000;
    QueryText query;
    query.add("since", rounded(since))
        .add("max", rounded(now - since + longest))
        .add("quiet", rounded(numberMember(call.arguments, "quiet").value_or(0) * 1000));
    if (const auto phone = textMember(call.arguments, "device")) query.add("device", *phone);
    const Json reply = TRY(getJsonFromEngine("/settle" + query.text(), call.limits()));
    return Json::array({textBlock(waitSentence(reply, isSinceAction))});
}

}  // namespace tandrel
