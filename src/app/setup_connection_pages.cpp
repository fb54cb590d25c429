#include "app/setup_connection_pages.h"

#include "app/qt_text.h"
#include "app/wrapped_label.h"

namespace tandrel {

BluetoothPage::BluetoothPage(ColorScheme appearance, WindowActions& actions)
    : SetupPage(appearance, tr("Bluetooth"),
                tr("To the iPhone, Tandrel is a Bluetooth keyboard and pointer. Nothing is "
                   "installed on the iPhone.")),
      actions_(actions) {
    status_ = new StatusCard(appearance);
    rows().addWidget(status_);
    rows().addWidget(makeAdvice(
        tr("Bluetooth is in the desktop's settings. In a terminal, “bluetoothctl power on” turns "
           "it on.")));
}

void BluetoothPage::display(const SetupView& view) {
    const AppModelInputs& in = view.app.inputs;
    if (const auto inTheWay = noticeOf(SetupStep::bluetooth, in)) {
        status_->display(noticeCard(*inTheWay, actions_));
    } else if (in.bluetoothPerm == Permission::notDetermined) {
        status_->display({.mark = Mark::warning,
                          .title = tr("Tandrel may not use Bluetooth yet"),
                          .detail = tr("Allow it, so that the iPhone can find this computer."),
                          .button = tr("Allow Bluetooth"),
                          .pressed = [this] { actions_.fix(Fix::allowBluetooth); }});
    } else if (in.bluetoothReady) {
        status_->display({.mark = Mark::passed,
                          .title = tr("Bluetooth is on"),
                          .detail = tr("An iPhone can find this computer under the name “%1”.")
                                        .arg(qtText(in.advertisedName))});
    } else {
        status_->display({.mark = Mark::warning,
                          .title = tr("Bluetooth isn't ready"),
                          .detail = qtText(in.bluetoothState)});
    }
}

PairingPage::PairingPage(ColorScheme appearance, WindowActions& actions)
    : SetupPage(appearance, tr("Pair the iPhone"),
                tr("On the iPhone, open Settings › Bluetooth and tap this name. When it asks, tap "
                   "Pair.")),
      actions_(actions) {
    auto* card = new QFrame;
    card->setProperty("ground", "card");
    auto* names = new QVBoxLayout(card);
    names->setContentsMargins(16, 14, 16, 14);
    name_ = makeWrappedLabel("title", {});
    otherName_ = makeWrappedLabel("secondary", {});
    names->addWidget(name_);
    names->addWidget(otherName_);
    rows().addWidget(card);
    status_ = new StatusCard(appearance);
    rows().addWidget(status_);
    rows().addWidget(
        makeAdvice(tr("close other Bluetooth settings windows while you pair; one that "
                      "searches can take the iPhone's answer.")));
}

void PairingPage::display(const SetupView& view) {
    const AppModelInputs& in = view.app.inputs;
    setWrappedText(*name_, qtText(in.advertisedName));
    setWrappedText(*otherName_, tr("It may be listed as “%1”.").arg(qtText(in.macName)));
    if (in.phoneConnected) {
        status_->display(
            {.mark = Mark::passed,
             .title = tr("The iPhone is connected"),
             .detail = tr("It comes back by itself whenever it is near and unlocked.")});
    } else if (const auto inTheWay = noticeOf(SetupStep::pairing, in)) {
        status_->display(noticeCard(*inTheWay, actions_));
    }
}

}  // namespace tandrel
