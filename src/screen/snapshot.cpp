#include "screen/snapshot.h"

#include <algorithm>
#include <cmath>

#include "image/area_scaler.h"
#include "image/jpeg_writer.h"
#include "image/pixels.h"
#include "image/png_writer.h"

namespace tandrel {
namespace {

constexpr int kJpegQuality = 80;

int scaledSide(int side, double scale) {
    return std::clamp(static_cast<int>(std::lround(side * scale)), 1, side);
}

bool isSide(int length) { return length >= 1 && length <= PixelBuffer::kLargestSide; }

}  // namespace

Size imageSize(Size screen, std::optional<int> maxWidth, std::optional<int> maxEdge) {
    if (screen.width < 1 || screen.height < 1) return {};
    double scale = 1;
    if (maxWidth) scale = std::min(scale, std::max(*maxWidth, 1) / double(screen.width));
    if (maxEdge) {
        scale =
            std::min(scale, std::max(*maxEdge, 1) / double(std::max(screen.width, screen.height)));
    }
    return {scaledSide(screen.width, scale), scaledSide(screen.height, scale)};
}

PixelBuffer scaledPicture(const PixelBuffer& frame, std::optional<int> maxWidth,
                          std::optional<int> maxEdge) {
    const Size full{frame.width(), frame.height()};
    const Size size = imageSize(full, maxWidth, maxEdge);
    if (size == full) return frame;
    return withPixels(
        frame, [&](const Pixels& pixels) { return scaled(pixels, size.width, size.height); });
}

std::optional<Bytes> encodeSnapshot(const PixelBuffer& frame, const SnapshotOptions& options) {
    const PixelBuffer picture = scaledPicture(frame, options.maxWidth, options.maxEdge);
    return withPixels(picture, [&](const Pixels& pixels) {
        return options.format == ImageFormat::png ? encodePng(pixels)
                                                  : encodeJpeg(pixels, kJpegQuality);
    });
}

std::optional<Bytes> thumbnailOf(const PixelBuffer& frame, int width, int height) {
    if (!frame || !isSide(width) || !isSide(height)) return std::nullopt;
    return withPixels(frame,
                      [&](const Pixels& pixels) { return greyThumbnail(pixels, width, height); });
}

}  // namespace tandrel
