#include "platform/linux/desktop_entry.h"

#include <fmt/format.h>

namespace tandrel {
namespace {

// A value of one line, in which a backslash begins an escape.
std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '\\') {
            result += R"(\\)";
        } else if (c == '\n') {
            result += R"(\n)";
        } else {
            result += c;
        }
    }
    return result;
}

}  // namespace

std::string execQuoted(const std::filesystem::path& program) {
    constexpr std::string_view kPlain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_./-+";
    std::string path = program.string();
    if (path.find_first_not_of(kPlain) == std::string::npos) return path;
    std::string quoted = "\"";
    for (const char c : path) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') quoted += '\\';
        if (c == '%') quoted += '%';
        quoted += c;
    }
    return quoted + '"';
}

std::string DesktopEntry::text() const {
    return fmt::format(
        "[Desktop Entry]\n"
        "Type=Application\n"
        "Version=1.5\n"
        "Name={}\n"
        "Comment={}\n"
        "Exec={}\n"
        "Icon={}\n"
        "Terminal=false\n"
        "Categories=Utility;\n"
        "StartupWMClass=tandrel\n",
        escaped(name), escaped(comment), escaped(execQuoted(program)), escaped(icon));
}

}  // namespace tandrel
