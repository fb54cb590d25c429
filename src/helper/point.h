#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "helper/tool.h"

namespace tandrel {

// The phone that an action goes to: the one named; else the one of which there are pictures; else
// the engine's own choice (none). The error is for an action that names no phone although the
// assistant has seen more than one.
Result<std::optional<std::string>> phoneOf(const ToolCall& call);

// The same for an action with points, with the phone's identifier in place of its name, and the
// picture that the points are in.
struct PointFrame {
    std::optional<std::string> phone;
    std::optional<PictureSize> picture = std::nullopt;
};
Result<PointFrame> pointFrameOf(const ToolCall& call);

// A place on the phone's screen, from 0 to 1 of its width and height.
struct ScreenPoint {
    double x = 0;
    double y = 0;
};

// The point in the arguments `xName` and `yName`, in the unit that "units" says. The error is for a
// point outside the picture, and for pixels of a picture that was never delivered.
Result<ScreenPoint> pointOf(const ToolCall& call, const PointFrame& frame, std::string_view xName,
                            std::string_view yName);

}  // namespace tandrel
