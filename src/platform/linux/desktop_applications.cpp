#include "platform/linux/desktop_applications.h"

#include <array>
#include <sstream>

#include <fmt/format.h>

#include "base/environment.h"
#include "base/file.h"
#include "base/paths.h"

namespace tandrel {
namespace {

struct KnownEntry {
    std::string_view bundleIdentifier;
    std::string_view name;
};

// clang-format off
constexpr std::array kKnownEntries{
    //         bundle identifier                  desktop entry
    KnownEntry{"com.anthropic.claudefordesktop", "com.anthropic.claudefordesktop"},
    KnownEntry{"com.anthropic.claudefordesktop", "claude-desktop"},
    KnownEntry{"com.openai.codex",               "com.openai.codex"},
    KnownEntry{"com.openai.codex",               "codex"},
};
// clang-format on

constexpr std::size_t kLargestEntry = 256 * 1024;

std::optional<std::string_view> commandLine(std::string_view entry) {
    bool inside = false;
    while (!entry.empty()) {
        const std::size_t end = std::min(entry.find('\n'), entry.size());
        std::string_view line = entry.substr(0, end);
        entry.remove_prefix(std::min(end + 1, entry.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.starts_with('[')) inside = line == "[Desktop Entry]";
        if (!inside || !line.starts_with("Exec")) continue;
        line.remove_prefix(4);
        line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
        if (!line.starts_with('=')) continue;
        line.remove_prefix(1);
        line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
        return line;
    }
    return std::nullopt;
}

// The escapes that every text of an entry may hold; others are left for the quoting.
std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        constexpr std::string_view kLetters = "sntr\\";
        constexpr std::string_view kMeanings = " \n\t\r\\";
        const auto at = text[i] == '\\' && i + 1 < text.size() ? kLetters.find(text[i + 1])
                                                               : std::string_view::npos;
        if (at == std::string_view::npos) {
            result += text[i];
        } else {
            result += kMeanings[at];
            ++i;
        }
    }
    return result;
}

}  // namespace

std::optional<std::vector<std::string>> desktopCommand(std::string_view entry) {
    const auto line = commandLine(entry);
    if (!line) return std::nullopt;
    const std::string text = unescaped(*line);
    std::vector<std::string> words;
    bool inWord = false;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == ' ' && !quoted) {
            inWord = false;
            continue;
        }
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        if (c == '%' && next != '%') {
            ++i;
            continue;
        }
        if (!inWord) words.emplace_back();
        inWord = true;
        if (c == '"') {
            quoted = !quoted;
            continue;
        }
        const bool escape = (c == '\\' && quoted) || c == '%';
        if (escape && next == '\0') return std::nullopt;
        if (escape) ++i;
        words.back() += escape ? next : c;
    }
    if (quoted || words.empty() || words.front().empty()) return std::nullopt;
    return words;
}

std::vector<std::filesystem::path> DesktopApplications::dataFoldersOfThisUser() {
    std::vector<std::filesystem::path> folders{dataHome()};
    std::string list = environment("XDG_DATA_DIRS").value_or("");
    if (list.empty()) list = "/usr/local/share:/usr/share";
    std::istringstream parts(list);
    for (std::string part; std::getline(parts, part, ':');) {
        if (part.starts_with('/')) folders.emplace_back(part);
    }
    return folders;
}

std::optional<InstalledApplication> DesktopApplications::find(std::string_view bundleIdentifier) {
    for (const auto& folder : dataFolders_) {
        for (const KnownEntry& known : kKnownEntries) {
            if (known.bundleIdentifier != bundleIdentifier) continue;
            const auto entry = folder / fmt::format("applications/{}.desktop", known.name);
            std::error_code error;
            if (std::filesystem::is_regular_file(entry, error)) {
                return InstalledApplication{entry};
            }
        }
    }
    return std::nullopt;
}

Result<void> DesktopApplications::open(const InstalledApplication& application) {
    const auto command = desktopCommand(TRY(readFile(application.location, kLargestEntry)));
    if (!command) {
        return fail(fmt::format("{} names no program to start", application.location.string()));
    }
    return processes_.startDetached(command->front(), {command->begin() + 1, command->end()});
}

}  // namespace tandrel
