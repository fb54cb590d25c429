#include "app/tray.h"

#include "app/icons.h"
#include "app/qt_text.h"

namespace tandrel {

Tray::Tray(OwnerMenu& menu) {
    icon_.setContextMenu(&menu);
    QObject::connect(&icon_, &QSystemTrayIcon::activated, &menu,
                     [&menu](QSystemTrayIcon::ActivationReason reason) {
                         if (reason == QSystemTrayIcon::Trigger) menu.popup(QCursor::pos());
                     });
}

void Tray::display(const AppSnapshot& now) {
    const Health state = health(now.inputs);
    if (shown_ != state) icon_.setIcon(healthIcon(state));
    icon_.setToolTip(tr("Tandrel: %1").arg(qtText(headline(now.inputs))));
    if (!shown_) icon_.show();
    shown_ = state;
}

}  // namespace tandrel
