#pragma once

#include <QImage>
#include <QStringList>
#include <QWidget>

// What an eye would fault on a window that is laid out and shown, as sentences that name the
// widget. The renderer of the windows runs both over each picture that it draws.
namespace tandrel {

// Texts that do not fit, widgets that leave their parent, and neighbours that overlap.
QStringList layoutFaults(const QWidget& window);

// Texts that stand out from their ground by less than 4.5:1 on `picture`, the window's own.
QStringList contrastFaults(const QWidget& window, const QImage& picture);

}  // namespace tandrel
