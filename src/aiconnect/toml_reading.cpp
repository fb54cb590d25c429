#include "aiconnect/toml_reading.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string>
#include <vector>

// Some text does not keep what the library takes for granted. That is an error of the parse, not
// the end of the process or, without assertions, of all sense.
[[noreturn]] static void breakOffParse() {
    throw std::logic_error("it is not TOML as the parser knows it");
}
#undef NDEBUG
#define TOML_ASSERT(expression) ((expression) ? void() : breakOffParse())
// Values nest no deeper than this; the library's own limit is meant for a larger stack.
#define TOML_MAX_NESTED_VALUES 32
#include <fmt/format.h>
#include <toml++/toml.h>

#include "base/unicode.h"

namespace tandrel {
namespace {

constexpr std::string_view kServersTable = "mcp_servers";
constexpr std::string_view kEntry = "tandrel";

// Each dot of a key opens a table inside a table, and those are compared and destroyed recursively.
// Dots in texts nest nothing, but telling them apart is the parser's work, and a line with this
// many is no line of settings either way.
constexpr int kMostDotsInALine = 250;

// Twice what is read of settings, since an edit adds to it.
constexpr std::size_t kLargestToml = 2 * 1024 * 1024;

bool isShallow(std::string_view text) {
    int dots = 0;
    for (const char c : text) {
        if (c == '\n') dots = 0;
        if (c == '.' && ++dots > kMostDotsInALine) return false;
    }
    return true;
}

// Nothing that is no text reaches the library.
bool isText(std::string_view text) {
    const bool plain = std::ranges::all_of(text, [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return (byte >= ' ' && byte != 0x7f) || c == '\t' || c == '\n' || c == '\r';
    });
    return plain && isUtf8(text);
}

// The library takes some letters beyond ASCII for what cannot be and then does anything at all. So
// it gets each of their bytes, and the percent sign itself, as %XX: that may stand wherever they
// may, in texts and comments, and nowhere else.
std::string asciiForm(std::string_view text) {
    std::string ascii;
    ascii.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80 && c != '%') {
            ascii += c;
        } else {
            ascii += fmt::format("%{:02X}", byte);
        }
    }
    return ascii;
}

std::string fromAsciiForm(std::string_view ascii) {
    std::string text;
    for (std::size_t i = 0; i < ascii.size(); ++i) {
        unsigned byte = 0;
        const char* digits = ascii.data() + i + 1;
        const bool isCoded = ascii[i] == '%' && i + 2 < ascii.size() &&
                             std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
        text += isCoded ? static_cast<char>(byte) : ascii[i];
        if (isCoded) i += 2;
    }
    return text;
}

// Texts and keys of the table are in their ASCII form.
Result<toml::table> parseToml(std::string_view text) {
    if (text.size() > kLargestToml) return fail("it is too large");
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    if (!isText(text)) return fail("it is not text");
    if (!isShallow(text)) return fail("its keys nest too deeply");
    try {
        return toml::parse(asciiForm(text));
    } catch (const toml::parse_error& error) {
        return fail(std::string(error.description()));
    } catch (const std::exception& error) {
        return fail(error.what());
    }
}

const toml::node* entryOf(const toml::table& file) {
    const toml::table* servers = file[kServersTable].as_table();
    return servers == nullptr ? nullptr : servers->get(kEntry);
}

bool isEntryFor(const toml::node* node, std::string_view command) {
    const toml::table* entry = node == nullptr ? nullptr : node->as_table();
    if (entry == nullptr || entry->size() != 2) return false;
    const toml::array* arguments = (*entry)["args"].as_array();
    return (*entry)["command"].value<std::string_view>() == asciiForm(command) &&
           arguments != nullptr && arguments->size() == 1 &&
           arguments->get(0)->value<std::string_view>() == "mcp";
}

// The file's tables without what an edit of ours may change.
void removeOurs(toml::table& file) {
    if (toml::table* servers = file[kServersTable].as_table()) {
        servers->erase(kEntry);
        if (servers->empty()) file.erase(kServersTable);
    }
    std::vector<std::string> renamed;
    for (const auto& [key, value] : file) {
        if (key.str().starts_with(kRenamedTable)) renamed.emplace_back(key.str());
    }
    for (const std::string& key : renamed) file.erase(key);
}

}  // namespace

bool isTomlDocument(std::string_view text) { return parseToml(text).has_value(); }

std::optional<std::string> tomlTextOfLine(std::string_view line, std::string_view key) {
    // Most lines name another key; only the one that may be meant is read.
    if (line.find(key) == std::string_view::npos) return std::nullopt;
    const auto table = parseToml(line);
    if (!table) return std::nullopt;
    const auto value = (*table)[key].value<std::string>();
    return value ? std::optional(fromAsciiForm(*value)) : std::nullopt;
}

std::optional<std::string> tomlServerCommand(std::string_view text) {
    const auto file = parseToml(text);
    const toml::node* entry = file ? entryOf(*file) : nullptr;
    if (entry == nullptr) return std::nullopt;
    const toml::table* table = entry->as_table();
    if (table == nullptr) return "";
    return fromAsciiForm((*table)["command"].value<std::string>().value_or(""));
}

Result<void> checkTomlEdit(std::string_view before, std::string_view after,
                           std::string_view command) {
    toml::table old = TRY(parseToml(before));
    if (entryOf(old) != nullptr) return fail("an entry stands where a line cannot be taken out");
    toml::table edited = TRY(parseToml(after));
    if (!isEntryFor(entryOf(edited), command)) return fail("the entry would not be read as meant");
    removeOurs(old);
    removeOurs(edited);
    if (old != edited) return fail("other settings would change their meaning");
    return {};
}

}  // namespace tandrel
