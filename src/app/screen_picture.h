#pragma once

#include <QImage>
#include <QPixmap>
#include <QSize>
#include <optional>

#include "base/pixel_buffer.h"
#include "payments/asker.h"

namespace tandrel {

// The frame's own pixels as Qt's image; the image keeps the frame alive.
QImage asImage(const PixelBuffer& frame);

// The image scaled to fit into `space` (points) with rounded corners, and a ring around `place`
// when there is one. The ring is wide and thin, so that what it marks stays readable.
QPixmap screenPicture(const QImage& image, const std::optional<PlaceOnScreen>& place,
                      const QSize& space);

}  // namespace tandrel
