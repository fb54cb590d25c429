#pragma once

#include <QIcon>
#include <QPixmap>

#include "app/status_notice.h"

namespace tandrel {

// The product's mark, `size` points wide and high.
QPixmap productMark(int size);
QIcon productIcon();

// The tray's icon: a phone that holds a sign of the state. The signs differ in shape, so that they
// can be told apart without colour, and a light rim sets them off from a dark panel.
QPixmap healthPixmap(Health health, int pixels);
QIcon healthIcon(Health health);

// A step's or a test line's mark.
enum class Mark { none, running, passed, failed, warning };
QPixmap markPixmap(Mark mark, int size, const QColor& ink);

}  // namespace tandrel
