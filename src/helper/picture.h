#pragma once

#include <string>

#include "helper/tool.h"

namespace tandrel {

// Larger pictures are shrunk by the apps on their own, some without telling the assistant, whose
// points would then be wrong; bytes beyond the second limit are refused.
inline constexpr int kLongestEdge = 1568;
inline constexpr std::size_t kMostPictureBytes = 500'000;

// A picture of a phone's screen as it goes to the app.
struct Picture {
    std::string phone;
    PictureSize size;
    std::string data;  // base 64
    std::string mimeType;
    Json reply = Json::object();  // what the engine said beside the picture
};

// The picture alone, or the picture and the text on it.
enum class PictureKind { screenshot, look };

// Fetches the current picture of the phone that the arguments name, as PNG where that is small
// enough, else as JPEG, else smaller, and remembers it as the one that points are in.
Result<Picture> takePicture(const ToolCall& call, PictureKind kind);

}  // namespace tandrel
