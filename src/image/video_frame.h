#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "base/pixel_buffer.h"
#include "base/result.h"

// Frames as video grabbers deliver them.
namespace tandrel {

// How the bytes of a frame are laid out and what they mean.
struct VideoForm {
    // yuyv: two pixels in four bytes (Y U Y V). nv12: a plane of brightness, then one of colour
    // pairs with half as many rows of as many bytes. bgr: three bytes a pixel. mjpeg: each frame a
    // JPEG file.
    enum class Layout { yuyv, nv12, bgr, mjpeg };
    enum class Colours { bt601, bt709 };
    static constexpr int kLargestSide = 8192;

    Layout layout = Layout::yuyv;
    int width = 0;
    int height = 0;
    int strideBytes = 0;  // of one row of the first plane, which may be padded; none for mjpeg
    Colours colours = Colours::bt601;

    // The same form with a stride that rows fit into: what the grabber named, unless it is too
    // small to be true or too large to be meant.
    VideoForm withStride(std::uint32_t named) const;
    // The bytes that one frame takes at least, its last row without padding; none for mjpeg.
    std::size_t frameBytes() const;

    bool operator==(const VideoForm&) const = default;
};

std::string_view word(VideoForm::Layout layout);

// The picture in a frame's bytes; bytes beyond it are left alone. The error says what is wrong with
// the frame: it is shorter than its form, or a JPEG file that is damaged, cut short or larger than
// a grabber's picture can be. Never half a picture. Any thread.
Result<PixelBuffer> pictureOf(const VideoForm& form, std::span<const std::uint8_t> bytes);

}  // namespace tandrel
