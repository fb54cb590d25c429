#pragma once

#include <optional>
#include <span>
#include <vector>

#include "image/video_frame.h"
#include "platform/linux/video_calls.h"

namespace tandrel {

// One form in which a grabber could deliver, by what it says of itself.
struct VideoOffer {
    VideoForm::Layout layout = VideoForm::Layout::yuyv;
    int width = 0;
    int height = 0;
    double framesPerSecond = 0;

    bool operator==(const VideoOffer&) const = default;
};

// The layout that V4L2 names by these four letters; none when it is not understood here.
std::optional<VideoForm::Layout> layoutOf(std::uint32_t pixelFormat);
std::uint32_t pixelFormatOf(VideoForm::Layout layout);

// Everything that an open device offers; forms not understood here are left out, and what a device
// says beyond reason is cut.
std::vector<VideoOffer> offersOf(VideoCalls& calls, int device);

// The one to take: fluent before sluggish, then large up to kLargestUseful (a phone upright fills
// only a third of it), then pixels as they are before JPEG, then no more often than the eye needs.
std::optional<VideoOffer> bestOffer(std::span<const VideoOffer> offers);

}  // namespace tandrel
