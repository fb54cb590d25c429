#include "app/phone_window.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>

#include "app/screen_picture.h"
#include "base/mutex.h"

namespace tandrel {
namespace {

// By which other programs know what the window shows.
constexpr const char* kWindowRole = "virtual-iphone";
constexpr int kBezel = 14;  // points
constexpr double kCornerRadius = 38;
constexpr double kShareOfDisplay = 0.85;

}  // namespace

// The newest frame on its way from the phone's thread to the window; a later one takes its place.
struct PhoneWindow::Latest {
    Mutex mutex;
    PixelBuffer frame OWNED_BY(mutex);
    bool announced OWNED_BY(mutex) = false;
};

PhoneWindow::PhoneWindow(VirtualPhone& phone) : phone_(phone), latest_(std::make_shared<Latest>()) {
    setWindowTitle(QString::fromStdString(phone.traits().name));
    setWindowRole(kWindowRole);
    const double shape = static_cast<double>(phone.traits().width) / phone.traits().height;
    const int height = static_cast<int>(
        QGuiApplication::primaryScreen()->availableGeometry().height() * kShareOfDisplay);
    resize(static_cast<int>((height - 2 * kBezel) * shape) + 2 * kBezel, height);
    setMinimumSize(200, 400);
    frames_ = phone_.watchFrames(
        VirtualPhone::View::display, [this, latest = latest_](PixelBuffer frame) {
            MutexLock lock(latest->mutex);
            if (latest->frame.sharesPixelsWith(frame)) return;
            latest->frame = std::move(frame);
            if (std::exchange(latest->announced, true)) return;
            QMetaObject::invokeMethod(this, [this] { takeFrame(); }, Qt::QueuedConnection);
        });
}

PhoneWindow::~PhoneWindow() { frames_.reset(); }

void PhoneWindow::takeFrame() {
    MutexLock lock(latest_->mutex);
    latest_->announced = false;
    image_ = asImage(latest_->frame);
    update();
}

QRectF PhoneWindow::screenArea() const {
    const QRectF space = QRectF(rect()).adjusted(kBezel, kBezel, -kBezel, -kBezel);
    if (image_.isNull()) return space;
    const QSizeF size = QSizeF(image_.size()).scaled(space.size(), Qt::KeepAspectRatio);
    QRectF area(QPointF(0, 0), size);
    area.moveCenter(space.center());
    return area;
}

void PhoneWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.fillRect(rect(), QColor(0x3a, 0x3a, 0x3c));
    const QRectF area = screenArea();
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(area.adjusted(-8, -8, 8, 8), kCornerRadius + 8, kCornerRadius + 8);
    QPainterPath outline;
    outline.addRoundedRect(area, kCornerRadius, kCornerRadius);
    painter.setClipPath(outline);
    painter.drawImage(area, image_);
}

void PhoneWindow::touch(TouchPhase phase, const QMouseEvent& event) {
    const QRectF area = screenArea();
    const QPointF at = event.position() - area.topLeft();
    phone_.touch(phase, {std::clamp(at.x() / area.width(), 0.0, 1.0),
                         std::clamp(at.y() / area.height(), 0.0, 1.0)});
}

void PhoneWindow::mousePressEvent(QMouseEvent* event) { touch(TouchPhase::down, *event); }

void PhoneWindow::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & Qt::LeftButton) touch(TouchPhase::move, *event);
}

void PhoneWindow::mouseReleaseEvent(QMouseEvent* event) { touch(TouchPhase::up, *event); }

}  // namespace tandrel
