#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "aiconnect/link.h"
#include "base/result.h"

// The text of Codex's settings file (TOML 1.0), edited line by line so that everything but
// Tandrel's own table stays byte for byte as its owner wrote it.
namespace tandrel {

// The table's name when the line is the header of a table or of an array of tables: without quotes
// and without blanks around the dots.
std::optional<std::string> tomlHeader(std::string_view line);

// The text as it stands between double quotes.
std::string tomlEscape(std::string_view text);

// Tandrel's entry, for pasting by hand, too.
std::string codexSnippet(std::string_view command);

// Takes Tandrel's table and its sub-tables out, wherever they stand, and puts a fresh entry at the
// end.
std::string mergeCodex(std::string_view text, std::string_view command);

// Whether the file names Tandrel, and whether it names the copy that lies at `command`.
Link codexLink(std::string_view text, std::string_view command);

// `mergeCodex`, but an error where the lines cannot be edited safely: the servers stand in an
// inline table or as dotted keys, or the outcome read as TOML would not be the file as it was with
// exactly our entry in it.
Result<std::string> mergeCodexSafely(std::string_view text, std::string_view command);

}  // namespace tandrel
