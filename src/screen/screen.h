#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/pixel_buffer.h"
#include "base/result.h"

namespace tandrel {

enum class ImageFormat { png, jpeg };

struct SnapshotOptions {
    ImageFormat format = ImageFormat::png;
    std::optional<int> maxWidth;
    std::optional<int> maxEdge;
};

struct Size {
    int width = 0;
    int height = 0;
    bool operator==(const Size&) const = default;
};

// CONTRACT SKETCH: the screen room fills this in.
class Screen {
 public:
    const std::string& id() const;
    const std::string& name() const;
    void stop();
    // The latest frame and when it came; none before the first.
    std::optional<PixelBuffer> frame();
    std::optional<double> frameAge();  // seconds
    std::optional<Size> size();
    // What has a frame and its age in one look.
    std::optional<Bytes> snapshot(const SnapshotOptions& options);
    std::optional<std::vector<std::uint8_t>> thumbnail(int width, int height);  // grey, row by row
};

// The size of the image that a frame of `screen` is delivered in; never larger than the frame.
Size imageSize(Size screen, std::optional<int> maxWidth, std::optional<int> maxEdge);
// The same for a frame one already holds. None when it cannot be encoded.
std::optional<Bytes> encodeSnapshot(const PixelBuffer& frame, const SnapshotOptions& options);

}  // namespace tandrel
