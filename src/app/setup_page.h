#pragma once

#include <QScrollArea>
#include <QVBoxLayout>

#include "app/setup_view.h"
#include "app/setup_widgets.h"
#include "app/window_actions.h"

namespace tandrel {

// One step of the setup: a title, what it is for, and below what the step needs; beside it the
// phone's picture where that helps. It scrolls where the window is too small.
class SetupPage : public QScrollArea {
 public:
    virtual void display(const SetupView& view) = 0;

 protected:
    enum class Picture { none, live };
    SetupPage(ColorScheme appearance, const QString& title, const QString& lead,
              Picture picture = Picture::none);

    ColorScheme appearance() const { return appearance_; }
    // Where the step's own rows go, from top to bottom.
    QVBoxLayout& rows() { return *rows_; }
    void showPicture(const QImage& image);
    // Where there is no room for both, the texts come before the picture.
    void resizeEvent(QResizeEvent* event) override;

 private:
    const ColorScheme appearance_;
    QVBoxLayout* rows_ = nullptr;
    LivePicture* picture_ = nullptr;
};

}  // namespace tandrel
