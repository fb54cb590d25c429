#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tandrel {

// What a request target names: a URL reference (RFC 3986) without scheme, authority and fragment.
struct Target {
    std::string path;                          // percent-decoded
    std::map<std::string, std::string> query;  // percent-decoded; "+" stays a plus
};

// Every text gives a target. An item without "=" has the value "", a later duplicate replaces an
// earlier one. A path, name or value whose escapes are malformed or do not spell UTF-8 stays as it
// was sent, so that an odd value is never taken for an absent one.
Target parseTarget(std::string_view text);

// The text with %XX replaced by bytes; none when an escape is malformed or the result is not UTF-8.
std::optional<std::string> percentDecoded(std::string_view text);
// The text as a path segment, a query name or a value: all but unreserved characters as %XX.
std::string percentEncoded(std::string_view text);

}  // namespace tandrel
