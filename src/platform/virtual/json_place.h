#pragma once

#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/json.h"
#include "base/result.h"

namespace tandrel {

// A value of a JSON file together with where it stands there, so that everything it lacks is
// reported as "file: /the/place: what must be there". Reads strictly: a value of another type or
// outside its bounds is an error, and so is a member that nobody asked for. The JSON value outlives
// its places.
class JsonPlace {
 public:
    JsonPlace(const Json& value, std::string file) : value_(&value), file_(std::move(file)) {}

    std::unexpected<Error> error(std::string_view what) const;

    Result<std::string> text(std::size_t longest) const;  // bytes of UTF-8, without control codes
    Result<double> number(double smallest, double largest) const;
    Result<int> wholeNumber(int smallest, int largest) const;
    Result<bool> truth() const;
    Result<std::vector<JsonPlace>> list(std::size_t most) const;

    // Fails unless this is an object whose members are all among `known`.
    Result<void> object(std::initializer_list<std::string_view> known) const;
    std::optional<JsonPlace> find(std::string_view member) const;
    Result<JsonPlace> member(std::string_view name) const;

    // The value that belongs to the name given in `names`.
    template <typename Value>
    Result<Value> choice(std::span<const std::pair<std::string_view, Value>> names) const {
        std::string allowed;
        for (const auto& [name, value] : names) {
            if (value_->is_string() && value_->get_ref<const std::string&>() == name) return value;
            allowed.append(allowed.empty() ? "\"" : ", \"").append(name).append("\"");
        }
        return error("must be one of " + allowed);
    }

 private:
    const Json* value_;
    std::string file_;
    std::string pointer_;
};

}  // namespace tandrel
