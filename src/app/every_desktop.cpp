#include "app/every_desktop.h"

#include <QGuiApplication>

#include "platform/linux/display.h"

namespace tandrel {

void stayOnEveryDesktop(QWidget& window) {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr) return;
    showOnEveryDesktop(x11->connection(), static_cast<std::uint32_t>(window.winId()));
}

}  // namespace tandrel
