#pragma once

#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <functional>

#include "app/brand.h"
#include "app/icons.h"
#include "app/window_actions.h"

// The pieces that the setup's pages are made of.
namespace tandrel {

// A card with a mark, what is the case, what to do about it, and a button where there is something
// that Tandrel can do itself.
class StatusCard final : public QFrame {
 public:
    explicit StatusCard(ColorScheme appearance);

    struct Content {
        Mark mark = Mark::none;
        QString title = {};
        QString detail = {};
        QString button = {};  // none: no button
        std::function<void()> pressed = {};
        QString otherButton = {};  // a second one beside it
        std::function<void()> otherPressed = {};
    };
    void display(Content content);
    // Adds something below what `display` sets.
    void add(QWidget* widget, Qt::Alignment alignment = {});

 private:
    const ColorScheme appearance_;
    QVBoxLayout* rows_ = nullptr;
    QLabel* mark_ = nullptr;
    QLabel* title_ = nullptr;
    QLabel* detail_ = nullptr;
    QPushButton* button_ = nullptr;
    QPushButton* otherButton_ = nullptr;
    std::function<void()> pressed_;
    std::function<void()> otherPressed_;
};

// A notice as a card, its button doing what the notice offers.
StatusCard::Content noticeCard(const Notice& notice, WindowActions& actions);

// A line that holds only on this kind of computer, set apart from the rest.
QFrame* makeAdvice(const QString& text);

// The phone's picture as it is now, or an empty phone that says there is none.
class LivePicture final : public QLabel {
 public:
    explicit LivePicture(ColorScheme appearance);
    void display(const QImage& image);

 private:
    const ColorScheme appearance_;
    qint64 shown_ = 0;  // the image's key
};

// The colour of a mark.
QColor markColor(Mark mark, ColorScheme appearance);

}  // namespace tandrel
