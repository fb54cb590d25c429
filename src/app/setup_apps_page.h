#pragma once

#include <QCoreApplication>
#include <QTimer>
#include <map>

#include "app/setup_page.h"

namespace tandrel {

// The AI apps on this computer: how each stands to this copy of Tandrel, a button that adds it, and
// the text that does the same by hand.
class AppsPage final : public SetupPage {
    Q_DECLARE_TR_FUNCTIONS(AppsPage)

 public:
    AppsPage(ColorScheme appearance, WindowActions& actions);
    void display(const SetupView& view) override;

 private:
    struct Row {
        StatusCard* status = nullptr;
        QWidget* byHand = nullptr;  // holds the two below
        QLabel* toPaste = nullptr;
        QPushButton* copy = nullptr;
        QString text;                               // what is copied
        std::optional<AIConnect::Outcome> outcome;  // of adding it; none before
        bool outcomeHeld = false;                   // the entry was seen after a success
        QTimer* copied = nullptr;                   // runs while the button says so
    };
    Row& rowOf(AIApp app);
    void addByHand(AIApp app, Row& row);
    void showApp(const AIAppStatus& app, Row& row);
    StatusCard::Content contentFor(const AIAppStatus& app, Row& row);
    // A success is told until the entry that it made has gone again.
    static void dropStaleOutcome(const AIAppStatus& app, Row& row);
    void showPlace(bool liesInPassing);
    void showHelper(const HelperCheck::State& helper);
    void add(AIApp app);
    WindowActions::Done showOutcomeAt(AIApp app);

    WindowActions& actions_;
    StatusCard* place_ = nullptr;
    StatusCard* helper_ = nullptr;
    std::map<AIApp, Row> apps_;
    SetupView shown_;
};

}  // namespace tandrel
