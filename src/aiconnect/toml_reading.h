#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"

// What of Codex's settings is read as TOML 1.0; the editing itself works on lines.
namespace tandrel {

// Tables of this name and a number stand for our own tables in the text before an edit.
inline constexpr std::string_view kRenamedTable = "tandrel_table_before_the_edit_";

// What some editors write before the text.
inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Whether the text is TOML as a whole.
bool isTomlDocument(std::string_view text);

// The text that the line gives to the key; nothing when it is another line or another type.
std::optional<std::string> tomlTextOfLine(std::string_view line, std::string_view key);

// The command of the entry mcp_servers.tandrel in whatever form it is written; empty when the entry
// has no usable one, nothing when there is no entry or the text is not TOML.
std::optional<std::string> tomlServerCommand(std::string_view text);

// Checks an edit by its meaning: both texts are TOML, `before` (our tables renamed) holds no entry
// of ours, `after` holds exactly the one for `command`, and everything else is the same in both.
Result<void> checkTomlEdit(std::string_view before, std::string_view after,
                           std::string_view command);

}  // namespace tandrel
