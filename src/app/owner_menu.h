#pragma once

#include <QCoreApplication>
#include <QMenu>
#include <functional>
#include <vector>

#include "app/brand.h"
#include "app/window_actions.h"

namespace tandrel {

// The menu behind the tray's icon: the headline, what is wrong and the button that mends it, the
// switches, and the ways to the windows. Main thread only.
class OwnerMenu final : public QMenu {
    Q_DECLARE_TR_FUNCTIONS(OwnerMenu)

 public:
    struct Windows {
        std::function<void()> test = {};
        std::function<void()> setup = {};
        std::function<void()> apps = {};  // the setup's step for them
        std::function<void()> approvals = {};
        std::function<void()> about = {};
    };

    // `actions` outlives it.
    OwnerMenu(ColorScheme appearance, WindowActions& actions, const Windows& windows);

    void display(const AppSnapshot& now);

 private:
    void addSwitches();
    void showLost(const std::vector<AIAppStatus>& apps);
    void showDetail(const QString& detail);
    QAction* addCommand(const QString& text, std::function<void()> run);
    QAction* addSwitch(const QString& text, void (WindowActions::*change)(bool));
    void confirmNoQuestions();

    const ColorScheme appearance_;
    WindowActions& actions_;
    bool paused_ = false;
    std::optional<Fix> offered_;
    QAction* headline_ = nullptr;
    std::vector<QAction*> detail_;  // a line each; a menu does not wrap by itself
    QAction* fix_ = nullptr;
    QAction* lost_ = nullptr;
    QAction* pause_ = nullptr;
    QAction* askBefore_ = nullptr;
    QAction* askUnsure_ = nullptr;
    QAction* autostart_ = nullptr;
};

// Asks whether questions before payments may stop; `yes` is called only on that very answer.
QWidget* makeNoQuestionsDialog(ColorScheme appearance, std::function<void()> yes);

}  // namespace tandrel
