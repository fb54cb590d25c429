#include "helper/point.h"

#include <cmath>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/ascii.h"

namespace tandrel {
namespace {

bool startsWithIgnoringCase(std::string_view text, std::string_view start) {
    return text.size() >= start.size() && equalsIgnoringCase(text.substr(0, start.size()), start);
}

// The identifier of the phone named, found as the engine finds it: by identifier, by name, by the
// identifier's beginning.
std::optional<std::string> identifierOf(const Json& devices, std::string_view named) {
    const auto firstWhere = [&](const char* key, auto matches) -> std::optional<std::string> {
        for (const Json& device : devices) {
            const auto value = textMember(device, key);
            if (value && matches(*value, named)) return textMember(device, "id");
        }
        return std::nullopt;
    };
    if (auto found = firstWhere("id", equalsIgnoringCase)) return found;
    if (auto found = firstWhere("name", equalsIgnoringCase)) return found;
    return firstWhere("id", startsWithIgnoringCase);
}

bool looksLikeFractions(double x, double y) {
    return x <= 1 && y <= 1 && (std::trunc(x) != x || std::trunc(y) != y);
}

}  // namespace

Result<std::optional<std::string>> phoneOf(const ToolCall& call) {
    if (auto named = textMember(call.arguments, "device")) return named;
    const std::vector<std::string> seen = call.memory.phones();
    if (seen.size() > 1) {
        return fail(
            fmt::format("You have seen the screens of more than one iPhone: say which one "
                        "is meant with \"device\" (\"{}\").",
                        fmt::join(seen, "\", \"")));
    }
    if (seen.empty()) return std::nullopt;
    return seen.front();
}

Result<PointFrame> pointFrameOf(const ToolCall& call) {
    PointFrame frame { .phone = TRY(phoneOf(call)) };
    if (!frame.phone) return frame;
    frame.picture = call.memory.find(*frame.phone);
    if (frame.picture) return frame;
    const Json reply = TRY(getJsonFromEngine("/devices", call.limits()));
    const auto devices = reply.find("devices");
    if (devices == reply.end() || !devices->is_array()) return frame;
    if (const auto identifier = identifierOf(*devices, *frame.phone)) {
        frame.phone = identifier;
        frame.picture = call.memory.find(*identifier);
    }
    return frame;
}

Result<ScreenPoint> pointOf(const ToolCall& call, const PointFrame& frame, std::string_view xName,
                            std::string_view yName) {
    const double x = numberMember(call.arguments, xName).value_or(0);
    const double y = numberMember(call.arguments, yName).value_or(0);
    if (textMember(call.arguments, "units") == "fractions") {
        if (x <= 1 && y <= 1) return ScreenPoint{x, y};
        return fail(
            fmt::format("({}, {}) is not a point in fractions: \"{}\" and \"{}\" go from 0 "
                        "to 1 then.",
                        x, y, xName, yName));
    }
    if (!frame.picture) {
        return fail(
            "Points are in the pixels of the last picture you got of this iPhone, and you "
            "have none yet: call iphone_look first, or give fractions from 0 to 1 with "
            "\"units\": \"fractions\".");
    }
    const auto [width, height] = *frame.picture;
    if (x >= width || y >= height) {
        return fail(
            fmt::format("({}, {}) lies outside the picture, which is {} x {} pixels: \"{}\" "
                        "goes from 0 to {} and \"{}\" from 0 to {}.",
                        x, y, width, height, xName, width - 1, yName, height - 1));
    }
    if (looksLikeFractions(x, y)) {
        return fail(
            fmt::format("({}, {}) looks like fractions: say so with \"units\": "
                        "\"fractions\", or give pixels of the picture ({} x {}).",
                        x, y, width, height));
    }
    return ScreenPoint{x / width, y / height};
}

}  // namespace tandrel
