#pragma once

#include <filesystem>
#include <string>

namespace tandrel {

// The text of an application's desktop entry (Desktop Entry Specification 1.5) that starts
// `program`. `icon` is a name of the icon theme or a path.
struct DesktopEntry {
    std::string name;
    std::string comment;
    std::filesystem::path program;
    std::string icon;

    std::string text() const;
};

// The path as a value of the key "Exec": quoted where a space or a sign needs it.
std::string execQuoted(const std::filesystem::path& program);

}  // namespace tandrel
