#include "base/json.h"

#include <fmt/format.h>

namespace tandrel {
namespace {

// Whether brackets outside strings nest no deeper than allowed; done before parsing, so that
// hostile depth costs one linear pass.
bool isShallow(std::string_view text) {
    int depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inString) {
            if (c == '\\') {
                ++i;
            } else if (c == '"') {
                inString = false;
            }
        } else if (c == '"') {
            inString = true;
        } else if (c == '{' || c == '[') {
            if (++depth > kDeepestJson) return false;
        } else if (c == '}' || c == ']') {
            --depth;
        }
    }
    return true;
}

const Json* member(const Json& object, std::string_view key) {
    if (!object.is_object()) return nullptr;
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

template <typename Value>
Result<Value> parseAs(std::string_view text) {
    if (!isShallow(text)) return fail(fmt::format("nested deeper than {} levels", kDeepestJson));
    try {
        return Value::parse(text);
    } catch (const nlohmann::json::exception& error) {
        return fail(error.what());
    }
}

}  // namespace

Result<Json> parseJson(std::string_view text) { return parseAs<Json>(text); }

Result<OrderedJson> parseOrderedJson(std::string_view text) { return parseAs<OrderedJson>(text); }

std::string dumpJson(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<std::string> textMember(const Json& object, std::string_view key) {
    const Json* value = member(object, key);
    if (value == nullptr || !value->is_string()) return std::nullopt;
    return value->get<std::string>();
}

std::optional<double> numberMember(const Json& object, std::string_view key) {
    const Json* value = member(object, key);
    if (value == nullptr || !value->is_number()) return std::nullopt;
    return value->get<double>();
}

std::optional<bool> boolMember(const Json& object, std::string_view key) {
    const Json* value = member(object, key);
    if (value == nullptr || !value->is_boolean()) return std::nullopt;
    return value->get<bool>();
}

}  // namespace tandrel
