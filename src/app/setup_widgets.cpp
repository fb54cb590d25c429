#include "app/setup_widgets.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QPainter>

#include "app/qt_text.h"
#include "app/screen_picture.h"
#include "app/wrapped_label.h"

namespace tandrel {
namespace {

constexpr int kRowMarkSize = 20;
constexpr QSize kPictureSpace(200, 420);
constexpr double kPhoneShape = 0.46;  // width by height

QPixmap emptyPhone(ColorScheme appearance, const QString& text) {
    const double ratio = qGuiApp->devicePixelRatio();
    const QSize size(static_cast<int>(kPictureSpace.height() * kPhoneShape),
                     kPictureSpace.height());
    QPixmap result(size * ratio);
    result.setDevicePixelRatio(ratio);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Brand::color("border", appearance), 2));
    painter.setBrush(Brand::color("surface", appearance));
    painter.drawRoundedRect(QRectF(1, 1, size.width() - 2, size.height() - 2), 22, 22);
    painter.setPen(Brand::color("secondary", appearance));
    painter.drawText(QRect(QPoint(0, 0), size).adjusted(12, 12, -12, -12),
                     Qt::AlignCenter | Qt::TextWordWrap, text);
    return result;
}

}  // namespace

QColor markColor(Mark mark, ColorScheme appearance) {
    switch (mark) {
        case Mark::passed:
            return Brand::color("good", appearance);
        case Mark::failed:
            return Brand::color("bad", appearance);
        case Mark::warning:
            return Brand::color("attention", appearance);
        case Mark::running:
            return Brand::color("link", appearance);
        case Mark::none:
            break;
    }
    return Brand::color("secondary", appearance);
}

StatusCard::StatusCard(ColorScheme appearance) : appearance_(appearance) {
    setProperty("ground", "card");
    auto* columns = new QHBoxLayout(this);
    columns->setContentsMargins(14, 12, 14, 12);
    columns->setSpacing(12);
    mark_ = new QLabel;
    columns->addWidget(mark_, 0, Qt::AlignTop);
    rows_ = new QVBoxLayout;
    rows_->setSpacing(6);
    columns->addLayout(rows_, 1);
    title_ = makeWrappedLabel("heading", {});
    detail_ = makeWrappedLabel("secondary", {});
    button_ = new QPushButton;
    otherButton_ = new QPushButton;
    rows_->addWidget(title_);
    rows_->addWidget(detail_);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addWidget(button_);
    buttons->addWidget(otherButton_);
    buttons->addStretch(1);
    rows_->addLayout(buttons);
    QObject::connect(button_, &QPushButton::clicked, this, [this] {
        if (pressed_) pressed_();
    });
    QObject::connect(otherButton_, &QPushButton::clicked, this, [this] {
        if (otherPressed_) otherPressed_();
    });
}

void StatusCard::display(Content content) {
    mark_->setPixmap(markPixmap(content.mark, Brand::scaled(kRowMarkSize),
                                markColor(content.mark, appearance_)));
    setWrappedText(*title_, content.title);
    setWrappedText(*detail_, content.detail);
    detail_->setVisible(!content.detail.isEmpty());
    button_->setText(content.button);
    button_->setVisible(!content.button.isEmpty());
    pressed_ = std::move(content.pressed);
    otherButton_->setText(content.otherButton);
    otherButton_->setVisible(!content.otherButton.isEmpty());
    otherPressed_ = std::move(content.otherPressed);
}

void StatusCard::add(QWidget* widget, Qt::Alignment alignment) {
    rows_->addWidget(widget, 0, alignment);
}

StatusCard::Content noticeCard(const Notice& notice, WindowActions& actions) {
    StatusCard::Content content{
        .mark = Mark::warning, .title = qtText(notice.title), .detail = qtText(notice.detail)};
    if (notice.fix && notice.fixLabel) {
        content.button = qtText(*notice.fixLabel);
        content.pressed = [&actions, fix = *notice.fix] { actions.fix(fix); };
    }
    return content;
}

QFrame* makeAdvice(const QString& text) {
    auto* frame = new QFrame;
    auto* rows = new QVBoxLayout(frame);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addWidget(makeWrappedLabel(
        "secondary", QCoreApplication::translate("Setup", "On Linux: %1").arg(text)));
    return frame;
}

LivePicture::LivePicture(ColorScheme appearance) : appearance_(appearance) {
    setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    setFixedSize(kPictureSpace);
    setPixmap(emptyPhone(appearance_, QCoreApplication::translate("Setup", "No picture yet")));
    setAccessibleName(QCoreApplication::translate("Setup", "The iPhone's screen as it is now"));
}

void LivePicture::display(const QImage& image) {
    if (image.cacheKey() == shown_) return;
    shown_ = image.cacheKey();
    setPixmap(image.isNull()
                  ? emptyPhone(appearance_, QCoreApplication::translate("Setup", "No picture yet"))
                  : screenPicture(image, std::nullopt, kPictureSpace));
}

}  // namespace tandrel
