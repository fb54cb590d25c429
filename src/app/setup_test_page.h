#pragma once

#include <QCoreApplication>

#include "app/setup_page.h"

namespace tandrel {

// The phone test: a line for each of its steps as they go, and the sentence at the end.
class TestPage final : public SetupPage {
    Q_DECLARE_TR_FUNCTIONS(TestPage)

 public:
    TestPage(ColorScheme appearance, WindowActions& actions);
    void display(const SetupView& view) override;

 private:
    QPushButton* start_ = nullptr;
    QLabel* message_ = nullptr;
    std::vector<StatusCard*> lines_;
    QVBoxLayout* lineRows_ = nullptr;
};

}  // namespace tandrel
