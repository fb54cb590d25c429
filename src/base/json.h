#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "base/result.h"

namespace tandrel {

// Objects keep their keys sorted.
using Json = nlohmann::json;
// Objects keep their keys in the order of the text: for files that other programs and people write.
using OrderedJson = nlohmann::ordered_json;

// Deeper input is refused: writing and destroying a value walks it recursively.
inline constexpr int kDeepestJson = 64;

// Reads one JSON value (RFC 8259, UTF-8) and nothing but white space around it. The error names
// what is wrong and where.
Result<Json> parseJson(std::string_view text);
Result<OrderedJson> parseOrderedJson(std::string_view text);

// The value as JSON text with sorted keys; text that is not UTF-8 has its bad bytes replaced by
// U+FFFD. Numbers that JSON does not know (NaN, infinity) become null.
std::string dumpJson(const Json& value);

// The member `key` of an object when it is there and of the type asked for.
std::optional<std::string> textMember(const Json& object, std::string_view key);
std::optional<double> numberMember(const Json& object, std::string_view key);
std::optional<bool> boolMember(const Json& object, std::string_view key);

}  // namespace tandrel
