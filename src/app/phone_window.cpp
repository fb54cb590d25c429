#include "app/phone_window.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <array>
#include <cctype>
#include <utility>

#include "app/screen_picture.h"
#include "base/mutex.h"
#include "hid/keymap.h"

namespace tandrel {
namespace {

// By which other programs know what the window shows.
constexpr const char* kWindowRole = "virtual-iphone";
constexpr int kBezel = 14;  // points
constexpr double kCornerRadius = 38;
constexpr double kShareOfDisplay = 0.85;

// The keys that make no character, by the names that the keymap knows.
constexpr std::array kKeys{
    std::pair{Qt::Key_Return, "return"}, std::pair{Qt::Key_Enter, "return"},
    std::pair{Qt::Key_Escape, "escape"}, std::pair{Qt::Key_Backspace, "delete"},
    std::pair{Qt::Key_Tab, "tab"},       std::pair{Qt::Key_Delete, "forwarddelete"},
    std::pair{Qt::Key_Left, "left"},     std::pair{Qt::Key_Right, "right"},
    std::pair{Qt::Key_Up, "up"},         std::pair{Qt::Key_Down, "down"},
    std::pair{Qt::Key_Home, "home"},     std::pair{Qt::Key_End, "end"},
    std::pair{Qt::Key_PageUp, "pageup"}, std::pair{Qt::Key_PageDown, "pagedown"},
};
constexpr std::array kModifiers{
    std::pair{Qt::MetaModifier, "cmd"},
    std::pair{Qt::ControlModifier, "ctrl"},
    std::pair{Qt::AltModifier, "alt"},
};

std::optional<Keymap::Stroke> strokeOf(const QKeyEvent& event) {
    for (const auto& [key, name] : kKeys) {
        if (event.key() == key) return Keymap::Stroke{*Keymap::find(Keymap::named, name), 0};
    }
    // With a modifier the text is a control character or none; the key then tells the letter.
    const QString text = event.text();
    if (!text.isEmpty() && text.front().isPrint()) return Keymap::stroke(text.toStdString());
    if (event.key() < Qt::Key_Space || event.key() > Qt::Key_AsciiTilde) return std::nullopt;
    const auto letter = static_cast<char>(std::tolower(event.key()));
    return Keymap::stroke({&letter, 1});
}

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
    frames_ = phone_.watchFrames(VirtualPhone::View::display,
                                 [this, latest = latest_](PixelBuffer frame) {
                                     MutexLock lock(latest->mutex);
                                     if (latest->frame.sharesPixelsWith(frame)) return;
                                     latest->frame = std::move(frame);
                                     if (std::exchange(latest->announced, true)) return;
                                     QCoreApplication::postEvent(this, new QEvent(QEvent::User));
                                 });
}

PhoneWindow::~PhoneWindow() { frames_.reset(); }

void PhoneWindow::customEvent(QEvent*) {
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

// The owner's keys come as those of a hardware keyboard.
void PhoneWindow::keyPressEvent(QKeyEvent* event) {
    auto stroke = strokeOf(*event);
    if (!stroke) return QWidget::keyPressEvent(event);
    for (const auto& [modifier, name] : kModifiers) {
        if (event->modifiers() & modifier) {
            stroke->modifiers |= *Keymap::find(Keymap::modifiers, name);
        }
    }
    phone_.receive({KeyEvent{stroke->code, stroke->modifiers}});
}

void PhoneWindow::mouseReleaseEvent(QMouseEvent* event) { touch(TouchPhase::up, *event); }

}  // namespace tandrel
