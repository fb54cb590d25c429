#pragma once

#include <QCoreApplication>
#include <QRadioButton>

#include "app/setup_page.h"

namespace tandrel {

// By cable or by AirPlay, and what comes of it.
class ScreenPage final : public SetupPage {
    Q_DECLARE_TR_FUNCTIONS(ScreenPage)

 public:
    ScreenPage(ColorScheme appearance, WindowActions& actions);
    void display(const SetupView& view) override;

 private:
    void addChoices();

    WindowActions& actions_;
    QRadioButton* cable_ = nullptr;
    QRadioButton* airplay_ = nullptr;
    QLabel* cableHow_ = nullptr;
    QLabel* airplayHow_ = nullptr;
    StatusCard* status_ = nullptr;
};

// AssistiveTouch, without which the phone shows no pointer and takes no taps.
class PointerPage final : public SetupPage {
    Q_DECLARE_TR_FUNCTIONS(PointerPage)

 public:
    PointerPage(ColorScheme appearance, WindowActions& actions);
    void display(const SetupView& view) override;

 private:
    WindowActions& actions_;
    StatusCard* status_ = nullptr;
};

}  // namespace tandrel
