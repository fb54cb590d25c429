#include "app/screen_picture.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>

namespace tandrel {
namespace {
constexpr double kPictureRadius = 14;
constexpr double kRingRadius = 21;

// Red between two white lines, to be seen on any ground.
void drawRing(QPainter& painter, QPointF centre) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(255, 255, 255, 230), 5));
    painter.drawEllipse(centre, kRingRadius, kRingRadius);
    painter.setPen(QPen(QColor(0xd7, 0x26, 0x26), 2));
    painter.drawEllipse(centre, kRingRadius, kRingRadius);
}

}  // namespace

QImage asImage(const PixelBuffer& frame) {
    auto* keeper = new PixelBuffer(frame);
    return QImage(
        frame.pixels(), frame.width(), frame.height(), frame.rowBytes(), QImage::Format_RGB32,
        [](void* kept) { delete static_cast<PixelBuffer*>(kept); }, keeper);
}

QPixmap screenPicture(const QImage& image, const std::optional<PlaceOnScreen>& place,
                      const QSize& space) {
    const double ratio = qGuiApp->devicePixelRatio();
    const QImage scaled =
        image.scaled(space * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QPixmap result(scaled.size());
    result.fill(Qt::transparent);
    result.setDevicePixelRatio(ratio);
    QPainter painter(&result);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF bounds(0.5, 0.5, scaled.width() / ratio - 1, scaled.height() / ratio - 1);
    QPainterPath outline;
    outline.addRoundedRect(bounds, kPictureRadius, kPictureRadius);
    painter.setClipPath(outline);
    painter.drawImage(bounds, scaled);
    painter.setClipping(false);
    painter.setPen(QPen(QColor(0xc7, 0xc7, 0xcc), 1));
    painter.drawPath(outline);
    if (place) drawRing(painter, {place->x * bounds.width(), place->y * bounds.height()});
    return result;
}

}  // namespace tandrel
