#pragma once

#include <QImage>
#include <QPixmap>
#include <optional>

#include "base/pixel_buffer.h"
#include "payments/asker.h"

namespace tandrel {

// The frame's own pixels as Qt's image; the image keeps the frame alive.
QImage asImage(const PixelBuffer& frame);

// The frame scaled to `height` points with rounded corners, and a ring around `place` when there is
// one.
QPixmap screenPicture(const PixelBuffer& frame, const std::optional<PlaceOnScreen>& place,
                      int height);

}  // namespace tandrel
