#pragma once

#include <QCoreApplication>
#include <QSystemTrayIcon>

#include "app/owner_menu.h"

namespace tandrel {

// The icon in the desktop's tray with the owner's menu behind it. Main thread only.
class Tray {
    Q_DECLARE_TR_FUNCTIONS(Tray)

 public:
    // `menu` outlives it.
    explicit Tray(OwnerMenu& menu);

    // Whether this desktop has a place for it at this moment.
    static bool hasHost() { return QSystemTrayIcon::isSystemTrayAvailable(); }
    void display(const AppSnapshot& now);

 private:
    QSystemTrayIcon icon_;
    std::optional<Health> shown_;
};

}  // namespace tandrel
