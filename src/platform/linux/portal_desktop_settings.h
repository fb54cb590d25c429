#pragma once

#include "platform/desktop_settings.h"

namespace tandrel {

// As the desktop portal tells it (org.freedesktop.portal.Settings on the session's bus), which also
// desktops have whose windows' colours say nothing to other toolkits.
class PortalDesktopSettings final : public DesktopSettings {
 public:
    ColorPreference colorPreference() override;
};

}  // namespace tandrel
