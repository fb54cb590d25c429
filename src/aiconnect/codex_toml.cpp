#include "aiconnect/codex_toml.h"

#include <algorithm>
#include <functional>
#include <vector>

#include <fmt/format.h>

#include "aiconnect/toml_reading.h"

namespace tandrel {
namespace {

constexpr std::string_view kTable = "mcp_servers.tandrel";

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

std::string_view withoutBlankEnds(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (true) {
        const std::size_t end = text.find('\n');
        lines.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return lines;
        text.remove_prefix(end + 1);
    }
}

constexpr std::string_view kKeyLetters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-.\"' ";

// What stands between the brackets of a line of the form
//   ^\[\[?\s*[A-Za-z0-9_\-."' ]+\s*\]\]?\s*(#.*)?$
// Matched by hand, since files with many long lines of blanks would keep a searcher busy for hours.
std::optional<std::string_view> betweenBrackets(std::string_view line) {
    if (!line.starts_with('[')) return std::nullopt;
    line.remove_prefix(line.starts_with("[[") ? 2 : 1);
    const std::size_t end = line.find(']');
    if (end == std::string_view::npos) return std::nullopt;
    std::string_view rest = line.substr(end + 1);
    if (rest.starts_with(']')) rest.remove_prefix(1);
    rest = withoutBlankEnds(rest);
    if (!rest.empty() && rest.front() != '#') return std::nullopt;
    const std::string_view name = line.substr(0, end);
    const std::string_view core = withoutBlankEnds(name);
    const bool isName = core.empty() ? name.find(' ') != std::string_view::npos
                                     : core.find_first_not_of(kKeyLetters) == core.npos;
    return isName ? std::optional(core) : std::nullopt;
}

// The servers given as an inline table or as dotted keys at the beginning of a line.
bool givesServersWithoutTable(std::string_view line) {
    constexpr std::string_view kServers = "mcp_servers";
    line = withoutBlankEnds(line);
    if (!line.starts_with(kServers)) return false;
    line = withoutBlankEnds(line.substr(kServers.size()));
    return line.starts_with('=') || line.starts_with('.');
}

bool isOurs(const std::string& header) {
    return header == kTable || header.starts_with(std::string(kTable) + ".");
}

// Whether the line ends the table before it: a plain header, or one with a key that only the whole
// language allows, such as [projects."/home/ada/app"].
bool endsTable(std::string_view line) {
    return withoutBlankEnds(line).starts_with('[') && isTomlDocument(line);
}

// The text with each of our lines, from a header of ours to the next header, handed to `change`.
// What it returns takes the line's place; nothing drops it.
struct OurLine {
    std::string_view text;
    bool isHeader;
};
using ChangeLine = std::function<std::optional<std::string>(const OurLine&)>;

std::vector<std::string> changeOurLines(std::string_view text, const ChangeLine& change) {
    std::vector<std::string> kept;
    bool inside = false;
    for (const std::string_view line : linesOf(text)) {
        const auto header = tomlHeader(line);
        if (header) {
            inside = isOurs(*header);
        } else if (inside && endsTable(line)) {
            inside = false;
        }
        if (!inside) {
            kept.emplace_back(line);
        } else if (auto changed = change({line, header.has_value()})) {
            kept.push_back(std::move(*changed));
        }
    }
    return kept;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) (text += line) += '\n';
    if (!text.empty()) text.pop_back();
    return text;
}

std::string_view takeByteOrderMark(std::string_view& text) {
    if (!text.starts_with(kByteOrderMark)) return {};
    text.remove_prefix(kByteOrderMark.size());
    return kByteOrderMark;
}

// The file as it was, but with each of our tables under a name that no other has, so that what the
// lines of our tables hold can be told from everything else once it is read as TOML.
std::string withOurTablesRenamed(std::string_view text) {
    takeByteOrderMark(text);
    int count = 0;
    return joined(changeOurLines(text, [&](const OurLine& line) -> std::optional<std::string> {
        if (!line.isHeader) return std::string(line.text);
        return fmt::format("[{}{}]", kRenamedTable, ++count);
    }));
}

}  // namespace

std::optional<std::string> tomlHeader(std::string_view line) {
    const auto quoted = betweenBrackets(withoutBlankEnds(line));
    if (!quoted) return std::nullopt;
    std::string name;
    for (const char c : *quoted) {
        if (c == '"' || c == '\'') continue;
        if (c == '.') name = withoutBlankEnds(name);
        if (isBlank(c) && name.ends_with('.')) continue;
        name += c;
    }
    return std::string(withoutBlankEnds(name));
}

std::string tomlEscape(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\' || c == '"') escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string codexSnippet(std::string_view command) {
    return fmt::format("[{}]\ncommand = \"{}\"\nargs = [\"mcp\"]", kTable, tomlEscape(command));
}

std::string mergeCodex(std::string_view text, std::string_view command) {
    std::string merged(takeByteOrderMark(text));
    auto kept = changeOurLines(text, [](const OurLine&) { return std::nullopt; });
    while (!kept.empty() && withoutBlankEnds(kept.back()).empty()) kept.pop_back();
    if (!kept.empty()) merged += joined(kept) + "\n\n";
    return merged + codexSnippet(command) + "\n";
}

Link codexLink(std::string_view text, std::string_view command) {
    takeByteOrderMark(text);
    bool found = false;
    bool inside = false;
    for (const std::string_view line : linesOf(text)) {
        if (const auto header = tomlHeader(line)) {
            inside = *header == kTable;
            found = found || inside;
        } else if (inside && endsTable(line)) {
            inside = false;
        } else if (inside) {
            if (const auto value = tomlTextOfLine(line, "command")) {
                return *value == command ? Link::addedHere : Link::addedElsewhere;
            }
        }
    }
    if (found) return Link::addedElsewhere;
    // The forms that are not edited line by line are entries all the same.
    const auto entry = tomlServerCommand(text);
    if (!entry) return Link::notAdded;
    return *entry == command ? Link::addedHere : Link::addedElsewhere;
}

Result<std::string> mergeCodexSafely(std::string_view text, std::string_view command) {
    std::string_view lines = text;
    takeByteOrderMark(lines);
    if (std::ranges::any_of(linesOf(lines), givesServersWithoutTable)) {
        return fail("the servers stand in an inline table or in dotted keys");
    }
    std::string merged = mergeCodex(text, command);
    TRY_VOID(checkTomlEdit(withOurTablesRenamed(text), merged, command));
    return merged;
}

}  // namespace tandrel
