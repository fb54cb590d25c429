#include "app/setup_page.h"

#include <QHBoxLayout>
#include <QResizeEvent>

#include "app/wrapped_label.h"

namespace tandrel {
namespace {
constexpr int kPageMargin = 28;
constexpr int kPageSpacing = 14;
constexpr int kLeastTextWidth = 240;
}  // namespace

SetupPage::SetupPage(ColorScheme appearance, const QString& title, const QString& lead,
                     Picture picture)
    : appearance_(appearance) {
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    auto* content = new QWidget;
    auto* columns = new QHBoxLayout(content);
    columns->setContentsMargins(kPageMargin, kPageMargin, kPageMargin, kPageMargin);
    columns->setSpacing(kPageMargin);
    auto* column = new QVBoxLayout;
    column->setSpacing(kPageSpacing);
    columns->addLayout(column, 1);
    column->addWidget(makeWrappedLabel("title", title));
    column->addWidget(makeWrappedLabel("lead", lead));
    rows_ = new QVBoxLayout;
    rows_->setSpacing(kPageSpacing);
    column->addLayout(rows_);
    column->addStretch(1);
    if (picture == Picture::live) {
        picture_ = new LivePicture(appearance);
        columns->addWidget(picture_, 0, Qt::AlignTop);
    }
    setWidget(content);
}

void SetupPage::showPicture(const QImage& image) {
    if (picture_ != nullptr) picture_->display(image);
}

void SetupPage::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    if (picture_ == nullptr) return;
    const int left = event->size().width() - picture_->width() - 3 * kPageMargin;
    picture_->setVisible(left >= Brand::scaled(kLeastTextWidth));
}

}  // namespace tandrel
