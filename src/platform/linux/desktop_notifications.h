#pragma once

#include <memory>

#include "platform/notifications.h"

namespace tandrel {

// The freedesktop Desktop Notifications service on the session bus and the freedesktop sound theme
// through libcanberra. Without either, what it would do is left out silently.
std::unique_ptr<Notifications> makeDesktopNotifications();

}  // namespace tandrel
