#pragma once

#include <QCoreApplication>
#include <QMenu>
#include <QStackedWidget>
#include <QWidget>
#include <array>
#include <functional>
#include <optional>
#include <vector>

#include "app/setup_page.h"

namespace tandrel {

// Leads the owner through the setup: the steps at the side, each with its mark, and the one that is
// open beside them. Main thread only.
class SetupWindow final : public QWidget {
    Q_DECLARE_TR_FUNCTIONS(SetupWindow)

 public:
    // `actions` outlives it.
    SetupWindow(ColorScheme appearance, WindowActions& actions);

    void display(const SetupView& view);
    void openStep(SetupStep step);
    SetupStep step() const { return step_; }
    // Where there is no tray: the menu behind a button, and a line that says why. None: neither.
    void showMenuButton(QMenu* menu, const QString& why);
    // Called when the window is shown or hidden, so that nobody fetches pictures for nobody.
    void setWatcher(std::function<void(bool visible)> watcher) { watcher_ = std::move(watcher); }

 protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

 private:
    QWidget* buildSide();
    QWidget* buildBottom();
    void addPages();
    void goOn();
    void showMarks(const SetupView& view);

    const ColorScheme appearance_;
    WindowActions& actions_;
    SetupStep step_ = SetupStep::bluetooth;
    SetupView shown_;
    std::array<std::optional<bool>, kSetupSteps> doneShown_;
    std::vector<QPushButton*> stepButtons_;
    std::vector<SetupPage*> pageList_;
    QStackedWidget* pages_ = nullptr;
    QPushButton* back_ = nullptr;
    QPushButton* next_ = nullptr;
    QPushButton* menuButton_ = nullptr;
    QLabel* remark_ = nullptr;
    std::function<void(bool visible)> watcher_;
};

}  // namespace tandrel
