#pragma once

#include <QWidget>

namespace tandrel {

// Makes a window that is not shown yet be there on every desktop. A desktop without that notion
// shows it on the current one.
void stayOnEveryDesktop(QWidget& window);

}  // namespace tandrel
