#include <fmt/format.h>

#include "helper/action.h"
#include "helper/point.h"
#include "helper/tool_functions.h"

namespace tandrel {
namespace {

Json bodyFor(const std::optional<std::string>& phone) {
    Json body = Json::object();
    if (phone) body["device"] = *phone;
    return body;
}

// Sends the action; `done` is what the assistant reads when it was done.
Result<Json> sent(const ToolCall& call, std::string_view path, const Json& body,
                  std::string_view done) {
    const Json reply = TRY(act(call, path, body));
    const std::string on = textMember(reply, "device").value_or("");
    return Json::array({textBlock(fmt::format("{}{}. Look at the screen to see what it did.", done,
                                              on.empty() ? "" : " on iPhone " + dumpJson(on)))});
}

Result<Json> sendToPhone(const ToolCall& call, std::string_view path, const Json& parameters,
                         std::string_view done) {
    Json body = bodyFor(TRY(phoneOf(call)));
    body.update(parameters);
    return sent(call, path, body, done);
}

// An action at one point.
Result<Json> sendToPoint(const ToolCall& call, std::string_view path, const Json& parameters,
                         std::string_view verb) {
    const PointFrame frame = TRY(pointFrameOf(call));
    const ScreenPoint point = TRY(pointOf(call, frame, "x", "y"));
    Json body = bodyFor(frame.phone);
    body.update(parameters);
    body["x"] = point.x;
    body["y"] = point.y;
    body["fraction"] = true;
    return sent(call, path, body,
                fmt::format("{} ({}, {})", verb, numberMember(call.arguments, "x").value_or(0),
                            numberMember(call.arguments, "y").value_or(0)));
}

}  // namespace

Result<Json> tap(const ToolCall& call) {
    return sendToPoint(call, "/tap", Json::object(), "Tapped at");
}

Result<Json> longPress(const ToolCall& call) {
    return sendToPoint(call, "/tap", {{"hold", call.arguments.at("seconds")}}, "Pressed long at");
}

Result<Json> movePointer(const ToolCall& call) {
    return sendToPoint(call, "/move", Json::object(), "Moved the pointer to");
}

Result<Json> swipe(const ToolCall& call) {
    const PointFrame frame = TRY(pointFrameOf(call));
    const ScreenPoint from = TRY(pointOf(call, frame, "x1", "y1"));
    const ScreenPoint to = TRY(pointOf(call, frame, "x2", "y2"));
    Json body = bodyFor(frame.phone);
    body.update({{"x1", from.x},
                 {"y1", from.y},
                 {"x2", to.x},
                 {"y2", to.y},
                 {"duration", call.arguments.at("seconds")},
                 {"fraction", true}});
    return sent(call, "/swipe", body, "Swiped");
}

Result<Json> nudgePointer(const ToolCall& call) {
    const bool isClick = boolMember(call.arguments, "click").value_or(false);
    return sendToPhone(
        call, "/nudge",
        {{"dx", call.arguments.at("dx")}, {"dy", call.arguments.at("dy")}, {"click", isClick}},
        isClick ? "Nudged the pointer and clicked" : "Nudged the pointer");
}

Result<Json> typeText(const ToolCall& call) {
    return sendToPhone(call, "/type", {{"text", call.arguments.at("text")}}, "Typed the text");
}

Result<Json> pressKey(const ToolCall& call) {
    Json parameters = {{"key", call.arguments.at("key")}};
    const auto modifiers = call.arguments.find("modifiers");
    if (modifiers != call.arguments.end() && !modifiers->empty()) {
        parameters["modifiers"] = *modifiers;
    }
    return sendToPhone(call, "/key", parameters, "Pressed the key");
}

Result<Json> goHome(const ToolCall& call) {
    return sendToPhone(call, "/home", Json::object(), "Pressed Home");
}

}  // namespace tandrel
