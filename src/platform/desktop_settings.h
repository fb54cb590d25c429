#pragma once

// What the person chose for the whole desktop.
namespace tandrel {

// none: the desktop says nothing, or has no preference.
enum class ColorPreference { none, dark, light };

class DesktopSettings {
 public:
    virtual ~DesktopSettings() = default;
    // Asks the desktop; blocks for a second at most. Any thread.
    virtual ColorPreference colorPreference() = 0;
};

}  // namespace tandrel
