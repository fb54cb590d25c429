#pragma once

#include <optional>

#include "base/bytes.h"
#include "base/pixel_buffer.h"

namespace tandrel {

enum class ImageFormat { png, jpeg };

struct SnapshotOptions {
    ImageFormat format = ImageFormat::png;
    std::optional<int> maxWidth = {};  // pixels
    std::optional<int> maxEdge = {};   // pixels, of the longer side
};

struct Size {
    int width = 0;   // pixels
    int height = 0;  // pixels
    bool operator==(const Size&) const = default;
};

// The size of the image that a frame of `screen` is delivered in: its shape, never larger than the
// frame nor than the limits, and at least one pixel each way. A limit below 1 counts as 1.
Size imageSize(Size screen, std::optional<int> maxWidth, std::optional<int> maxEdge);

// The frame in that size; where nothing needs scaling it is the very same pixels, uncopied.
PixelBuffer scaledPicture(const PixelBuffer& frame, std::optional<int> maxWidth,
                          std::optional<int> maxEdge);

// The frame as an image file in that size. None when it cannot be encoded.
std::optional<Bytes> encodeSnapshot(const PixelBuffer& frame, const SnapshotOptions& options);

// The whole frame drawn to `width` x `height` grey bytes, row by row. None for sides that no
// picture has.
std::optional<Bytes> thumbnailOf(const PixelBuffer& frame, int width, int height);

}  // namespace tandrel
