#include "app/autostart.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/file.h"
#include "platform/linux/desktop_applications.h"
#include "platform/linux/desktop_entry.h"

namespace tandrel {
namespace {

constexpr std::size_t kLargestEntry = 64 * 1024;

bool hasLine(std::string_view text, std::string_view line) {
    const std::string all = fmt::format("\n{}\n", text);
    return all.find(fmt::format("\n{}\n", line)) != std::string::npos;
}

}  // namespace

Autostart::Autostart(std::filesystem::path bundle, const std::filesystem::path& configHome)
    : bundle_(std::move(bundle)), entry_(configHome / "autostart/tandrel.desktop") {}

bool Autostart::isOn() const {
    const auto text = readFile(entry_, kLargestEntry);
    // Desktops turn an entry off by one of these lines instead of removing it.
    if (!text || hasLine(*text, "Hidden=true") ||
        hasLine(*text, "X-GNOME-Autostart-enabled=false")) {
        return false;
    }
    const auto command = desktopCommand(*text);
    return command && !command->empty() && command->front() == program();
}

Result<void> Autostart::turnOn() const {
    const DesktopEntry entry{.name = "Tandrel",
                             .comment = "Lets your AI see and operate your iPhone",
                             .program = program(),
                             .icon = "tandrel"};
    return replaceFile(entry_, entry.text());
}

Result<void> Autostart::turnOff() const {
    std::error_code error;
    std::filesystem::remove(entry_, error);
    if (error) return fail(fmt::format("can't remove {}: {}", entry_.string(), error.message()));
    return {};
}

}  // namespace tandrel
