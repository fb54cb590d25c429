#pragma once

#include <QCoreApplication>

#include "app/setup_page.h"

namespace tandrel {

// The computer's Bluetooth.
class BluetoothPage final : public SetupPage {
    Q_DECLARE_TR_FUNCTIONS(BluetoothPage)

 public:
    BluetoothPage(ColorScheme appearance, WindowActions& actions);
    void display(const SetupView& view) override;

 private:
    WindowActions& actions_;
    StatusCard* status_ = nullptr;
};

// The name to tap on the phone, and whether it has connected.
class PairingPage final : public SetupPage {
    Q_DECLARE_TR_FUNCTIONS(PairingPage)

 public:
    PairingPage(ColorScheme appearance, WindowActions& actions);
    void display(const SetupView& view) override;

 private:
    WindowActions& actions_;
    QLabel* name_ = nullptr;
    QLabel* otherName_ = nullptr;
    StatusCard* status_ = nullptr;
};

}  // namespace tandrel
