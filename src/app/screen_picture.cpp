#include "app/screen_picture.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>

namespace tandrel {
namespace {
constexpr double kCornerRadius = 14;
constexpr double kRingRadius = 15;
}  // namespace

QImage asImage(const PixelBuffer& frame) {
    auto* keeper = new PixelBuffer(frame);
    return QImage(
        frame.pixels(), frame.width(), frame.height(), frame.rowBytes(), QImage::Format_RGB32,
        [](void* kept) { delete static_cast<PixelBuffer*>(kept); }, keeper);
}

QPixmap screenPicture(const PixelBuffer& frame, const std::optional<PlaceOnScreen>& place,
                      int height) {
    const double ratio = qGuiApp->devicePixelRatio();
    const QImage scaled =
        asImage(frame).scaledToHeight(static_cast<int>(height * ratio), Qt::SmoothTransformation);
    QPixmap result(scaled.size());
    result.fill(Qt::transparent);
    result.setDevicePixelRatio(ratio);
    QPainter painter(&result);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF bounds(0.5, 0.5, scaled.width() / ratio - 1, scaled.height() / ratio - 1);
    QPainterPath outline;
    outline.addRoundedRect(bounds, kCornerRadius, kCornerRadius);
    painter.setClipPath(outline);
    painter.drawImage(bounds, scaled);
    painter.setClipping(false);
    painter.setPen(QPen(QColor(0xc7, 0xc7, 0xcc), 1));
    painter.drawPath(outline);
    if (place) {
        const QPointF centre(place->x * bounds.width(), place->y * bounds.height());
        painter.setPen(QPen(Qt::white, 6));
        painter.drawEllipse(centre, kRingRadius, kRingRadius);
        painter.setPen(QPen(QColor(0xd7, 0x26, 0x26), 3));
        painter.drawEllipse(centre, kRingRadius, kRingRadius);
    }
    return result;
}

}  // namespace tandrel
