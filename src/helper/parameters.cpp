#include "helper/parameters.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace tandrel {
namespace {

using Kind = Parameter::Kind;

constexpr std::size_t kMostExcerpt = 60;

std::size_t characterCount(std::string_view utf8) {
    return static_cast<std::size_t>(std::ranges::count_if(
        utf8, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

std::string_view withoutBlanks(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1);
}

std::optional<double> numberFrom(const Json& value) {
    double number = 0;
    if (value.is_number()) {
        number = value.get<double>();
    } else if (value.is_string()) {
        const std::string_view text = withoutBlanks(value.get_ref<const std::string&>());
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    } else {
        return std::nullopt;
    }
    if (!std::isfinite(number)) return std::nullopt;
    return number;
}

std::string takes(const Parameter& parameter) {
    return fmt::format("\"{}\" takes {}", parameter.name, [&]() -> std::string {
        switch (parameter.kind) {
            case Kind::number:
                return fmt::format("a number from {} to {}", parameter.least, parameter.most);
            case Kind::integer:
                return fmt::format("a whole number from {} to {}", parameter.least, parameter.most);
            case Kind::text:
                return fmt::format("text of {} to {} characters", parameter.least, parameter.most);
            case Kind::yesNo:
                return "true or false";
            case Kind::choice:
                return fmt::format("one of \"{}\"", fmt::join(parameter.choices, "\", \""));
            case Kind::choices:
                return fmt::format("a list of \"{}\"", fmt::join(parameter.choices, "\", \""));
        }
        return {};
    }());
}

std::unexpected<Error> refuse(const Parameter& parameter, const Json& value) {
    return fail(fmt::format("{}, not {}.", takes(parameter), excerpt(value)));
}

Result<Json> checkNumber(const Parameter& parameter, const Json& value) {
    const auto number = numberFrom(value);
    const bool isWhole = number && std::trunc(*number) == *number;
    if (!number || (parameter.kind == Kind::integer && !isWhole) || *number < parameter.least ||
        *number > parameter.most) {
        return refuse(parameter, value);
    }
    if (parameter.kind == Kind::integer) return static_cast<std::int64_t>(*number);
    return *number;
}

Result<Json> checkText(const Parameter& parameter, const Json& value) {
    if (!value.is_string()) return refuse(parameter, value);
    const auto count = static_cast<double>(characterCount(value.get_ref<const std::string&>()));
    if (count < parameter.least || count > parameter.most) {
        return fail(fmt::format("{}; this one has {}.", takes(parameter), count));
    }
    return value;
}

Result<Json> checkYesNo(const Parameter& parameter, const Json& value) {
    if (value.is_boolean()) return value;
    if (value == "true") return true;
    if (value == "false") return false;
    return refuse(parameter, value);
}

bool isChoice(const Parameter& parameter, const Json& value) {
    return value.is_string() &&
           std::ranges::find(parameter.choices, value.get_ref<const std::string&>()) !=
               parameter.choices.end();
}

Result<Json> checkChoices(const Parameter& parameter, const Json& value) {
    const bool isList =
        value.is_array() && value.size() <= parameter.choices.size() &&
        std::ranges::all_of(value, [&](const Json& item) { return isChoice(parameter, item); });
    if (!isList) return refuse(parameter, value);
    return value;
}

Result<Json> checkValue(const Parameter& parameter, const Json& value) {
    switch (parameter.kind) {
        case Kind::number:
        case Kind::integer:
            return checkNumber(parameter, value);
        case Kind::text:
            return checkText(parameter, value);
        case Kind::yesNo:
            return checkYesNo(parameter, value);
        case Kind::choices:
            return checkChoices(parameter, value);
        case Kind::choice:
            if (!isChoice(parameter, value)) return refuse(parameter, value);
            return value;
    }
    return refuse(parameter, value);
}

Json schemaOf(const Parameter& parameter) {
    Json schema = {{"description", parameter.description}};
    switch (parameter.kind) {
        case Kind::number:
        case Kind::integer:
            schema["type"] = parameter.kind == Kind::number ? "number" : "integer";
            schema["minimum"] = parameter.least;
            schema["maximum"] = parameter.most;
            break;
        case Kind::text:
            schema["type"] = "string";
            schema["minLength"] = static_cast<int>(parameter.least);
            schema["maxLength"] = static_cast<int>(parameter.most);
            break;
        case Kind::yesNo:
            schema["type"] = "boolean";
            break;
        case Kind::choice:
            schema["type"] = "string";
            schema["enum"] = parameter.choices;
            break;
        case Kind::choices:
            schema["type"] = "array";
            schema["items"] = {{"type", "string"}, {"enum", parameter.choices}};
            schema["maxItems"] = parameter.choices.size();
            break;
    }
    if (!parameter.standard.empty()) schema["default"] = Json::parse(parameter.standard);
    return schema;
}

std::unexpected<Error> refuseUnknown(std::string_view tool, std::span<const Parameter> parameters,
                                     const std::string& name) {
    std::vector<std::string_view> known;
    for (const Parameter& parameter : parameters) known.push_back(parameter.name);
    return fail(fmt::format("{} has no parameter {}; it takes {}.", tool, excerpt(name),
                            known.empty() ? "none" : fmt::format("{}", fmt::join(known, ", "))));
}

}  // namespace

std::string excerpt(const Json& value) {
    std::string text = dumpJson(value);
    if (text.size() <= kMostExcerpt) return text;
    std::size_t end = kMostExcerpt;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
    return text.substr(0, end) + "...";
}

Json inputSchema(std::span<const Parameter> parameters) {
    Json properties = Json::object();
    Json required = Json::array();
    for (const Parameter& parameter : parameters) {
        properties[parameter.name] = schemaOf(parameter);
        if (parameter.need == Parameter::Need::required) required.push_back(parameter.name);
    }
    // Some apps' models take no schema without "properties", even where there are none.
    Json schema = {
        {"type", "object"}, {"properties", std::move(properties)}, {"additionalProperties", false}};
    if (!required.empty()) schema["required"] = std::move(required);
    return schema;
}

Result<Json> checkArguments(std::string_view tool, std::span<const Parameter> parameters,
                            const Json& given) {
    for (const auto& [name, value] : given.items()) {
        if (std::ranges::find(parameters, name, &Parameter::name) == parameters.end()) {
            return refuseUnknown(tool, parameters, name);
        }
    }
    Json checked = Json::object();
    for (const Parameter& parameter : parameters) {
        const auto value = given.find(parameter.name);
        if (value != given.end() && !value->is_null()) {
            checked[parameter.name] = TRY(checkValue(parameter, *value));
        } else if (parameter.need == Parameter::Need::required) {
            return fail(
                fmt::format("{} needs \"{}\": {}", tool, parameter.name, parameter.description));
        } else if (!parameter.standard.empty()) {
            checked[parameter.name] = Json::parse(parameter.standard);
        }
    }
    return checked;
}

}  // namespace tandrel
