#pragma once

#include <QWidget>

#include "app/brand.h"
#include "base/app_info.h"

namespace tandrel {

// What this program is, which version, and where its files lie.
QWidget* makeAboutWindow(ColorScheme appearance, const AppInfo& info);

}  // namespace tandrel
