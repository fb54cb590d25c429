#pragma once

#include <span>
#include <string>
#include <string_view>

#include "base/json.h"
#include "base/result.h"

namespace tandrel {

// What a tool takes, one row a parameter: the schema that the app reads and the check of what the
// assistant gives come from the same row.
struct Parameter {
    enum class Kind { number, integer, text, yesNo, choice, choices };
    enum class Need { optional, required };

    std::string_view name;
    Kind kind = Kind::text;
    std::string_view description;
    Need need = Need::optional;
    // Numbers: the least and the most, both allowed. Text: the least and the most characters.
    double least = 0;
    double most = 0;
    std::span<const std::string_view> choices = {};
    std::string_view standard = {};  // the value when left out, as JSON; none when empty
};

// A JSON Schema (2020-12) of an object with these members and no others.
Json inputSchema(std::span<const Parameter> parameters);

// The arguments as they are to be used: numbers and truth values given as text turned into what
// they are, absent ones filled in. The error is a sentence that names the parameter and what it
// takes.
Result<Json> checkArguments(std::string_view tool, std::span<const Parameter> parameters,
                            const Json& given);

// The value as JSON for a message to the assistant, cut where it is long.
std::string excerpt(const Json& value);

}  // namespace tandrel
