#include "platform/linux/video_offer.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>

#include <linux/videodev2.h>

namespace tandrel {
namespace {

using Layout = VideoForm::Layout;

// A device that never ends its list is believed so far.
constexpr std::uint32_t kMostEntries = 64;
constexpr double kUnknownRate = 30;
constexpr double kSluggish = 15;  // frames per second
constexpr double kFluent = 25;
constexpr int kLargestUseful = 3840 * 2160;  // pixels

struct Name {
    std::uint32_t pixelFormat;
    Layout layout;
};
// clang-format off
constexpr Name kNames[] = {
    {V4L2_PIX_FMT_YUYV,  Layout::yuyv},
    {V4L2_PIX_FMT_NV12,  Layout::nv12},
    {V4L2_PIX_FMT_BGR24, Layout::bgr},
    {V4L2_PIX_FMT_MJPEG, Layout::mjpeg},
    {V4L2_PIX_FMT_JPEG,  Layout::mjpeg},
};

// Where a device takes any size in steps, these are tried.
constexpr std::pair<std::uint32_t, std::uint32_t> kUsualSizes[] = {
    {3840, 2160}, {2560, 1440}, {1920, 1080}, {1280, 720},
};
// clang-format on

struct FrameSize {
    std::uint32_t width;
    std::uint32_t height;
};

bool takes(const v4l2_frmsize_stepwise& steps, std::uint32_t width, std::uint32_t height) {
    const auto fits = [](std::uint32_t value, std::uint32_t least, std::uint32_t most,
                         std::uint32_t step) {
        return value >= least && value <= most && (value - least) % std::max(step, 1U) == 0;
    };
    return fits(width, steps.min_width, steps.max_width, steps.step_width) &&
           fits(height, steps.min_height, steps.max_height, steps.step_height);
}

std::vector<FrameSize> sizesOf(VideoCalls& calls, int device, std::uint32_t pixelFormat) {
    std::vector<FrameSize> sizes;
    for (std::uint32_t i = 0; i < kMostEntries; ++i) {
        v4l2_frmsizeenum entry{};
        entry.index = i;
        entry.pixel_format = pixelFormat;
        if (calls.ioctl(device, VIDIOC_ENUM_FRAMESIZES, &entry) < 0) break;
        if (entry.type == V4L2_FRMSIZE_TYPE_DISCRETE) {
            sizes.push_back({entry.discrete.width, entry.discrete.height});
            continue;
        }
        for (const auto& [width, height] : kUsualSizes) {
            if (takes(entry.stepwise, width, height)) sizes.push_back({width, height});
        }
        if (sizes.empty()) sizes.push_back({entry.stepwise.max_width, entry.stepwise.max_height});
        break;
    }
    if (!sizes.empty()) return sizes;
    // Drivers of cards that follow the signal list nothing: there is one size, which they have now.
    v4l2_format now{};
    now.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (calls.ioctl(device, VIDIOC_G_FMT, &now) == 0) {
        sizes.push_back({now.fmt.pix.width, now.fmt.pix.height});
    }
    return sizes;
}

double rate(const v4l2_fract& interval) {
    if (interval.numerator == 0 || interval.denominator == 0) return kUnknownRate;
    return static_cast<double>(interval.denominator) / interval.numerator;
}

std::vector<double> ratesOf(VideoCalls& calls, int device, std::uint32_t pixelFormat,
                            const FrameSize& size) {
    std::vector<double> rates;
    for (std::uint32_t i = 0; i < kMostEntries; ++i) {
        v4l2_frmivalenum entry{};
        entry.index = i;
        entry.pixel_format = pixelFormat;
        entry.width = size.width;
        entry.height = size.height;
        if (calls.ioctl(device, VIDIOC_ENUM_FRAMEINTERVALS, &entry) < 0) break;
        if (entry.type == V4L2_FRMIVAL_TYPE_DISCRETE) {
            rates.push_back(rate(entry.discrete));
            continue;
        }
        rates.push_back(std::clamp(kUnknownRate, rate(entry.stepwise.max),
                                   std::max(rate(entry.stepwise.min), rate(entry.stepwise.max))));
        break;
    }
    if (rates.empty()) rates.push_back(kUnknownRate);
    return rates;
}

}  // namespace

std::optional<Layout> layoutOf(std::uint32_t pixelFormat) {
    const auto name = std::ranges::find(kNames, pixelFormat, &Name::pixelFormat);
    if (name == std::end(kNames)) return std::nullopt;
    return name->layout;
}

std::uint32_t pixelFormatOf(Layout layout) {
    return std::ranges::find(kNames, layout, &Name::layout)->pixelFormat;
}

std::vector<VideoOffer> offersOf(VideoCalls& calls, int device) {
    std::vector<VideoOffer> offers;
    for (std::uint32_t i = 0; i < kMostEntries; ++i) {
        v4l2_fmtdesc entry{};
        entry.index = i;
        entry.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        if (calls.ioctl(device, VIDIOC_ENUM_FMT, &entry) < 0) break;
        const auto layout = layoutOf(entry.pixelformat);
        if (!layout) continue;
        for (const FrameSize& size : sizesOf(calls, device, entry.pixelformat)) {
            const bool isPicture = size.width > 0 && size.height > 0 &&
                                   std::max(size.width, size.height) <= VideoForm::kLargestSide;
            if (!isPicture) continue;
            for (const double perSecond : ratesOf(calls, device, entry.pixelformat, size)) {
                offers.push_back({*layout, static_cast<int>(size.width),
                                  static_cast<int>(size.height), perSecond});
            }
        }
    }
    return offers;
}

std::optional<VideoOffer> bestOffer(std::span<const VideoOffer> offers) {
    const auto merit = [](const VideoOffer& offer) {
        const int area = offer.width * offer.height;
        const bool isFluent = offer.framesPerSecond >= kFluent;
        return std::tuple(offer.framesPerSecond >= kSluggish, area <= kLargestUseful,
                          area <= kLargestUseful ? area : -area, isFluent,
                          offer.layout != Layout::mjpeg,
                          isFluent ? -offer.framesPerSecond : offer.framesPerSecond);
    };
    const auto best = std::ranges::max_element(offers, {}, merit);
    if (best == offers.end()) return std::nullopt;
    return *best;
}

}  // namespace tandrel
