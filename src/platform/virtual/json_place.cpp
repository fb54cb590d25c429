#include "platform/virtual/json_place.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace tandrel {
namespace {

// A member's name as a reference token (RFC 6901).
std::string token(std::string_view name) {
    std::string escaped;
    for (const char c : name) {
        if (c == '~') {
            escaped += "~0";
        } else if (c == '/') {
            escaped += "~1";
        } else {
            escaped += c;
        }
    }
    return escaped;
}

bool isControl(char c) {
    const auto code = static_cast<unsigned char>(c);
    return (code < 0x20 && c != '\n') || code == 0x7F;
}

}  // namespace

std::unexpected<Error> JsonPlace::error(std::string_view what) const {
    return fail(fmt::format("{}: {}: {}", file_, pointer_.empty() ? "/" : pointer_, what));
}

Result<std::string> JsonPlace::text(std::size_t longest) const {
    if (!value_->is_string()) return error("must be text");
    const auto& text = value_->get_ref<const std::string&>();
    if (text.size() > longest) return error(fmt::format("must be at most {} bytes", longest));
    if (std::ranges::any_of(text, isControl)) return error("must have no control characters");
    return text;
}

Result<double> JsonPlace::number(double smallest, double largest) const {
    if (value_->is_number()) {
        const auto number = value_->get<double>();
        if (number >= smallest && number <= largest) return number;
    }
    return error(fmt::format("must be a number from {} to {}", smallest, largest));
}

Result<int> JsonPlace::wholeNumber(int smallest, int largest) const {
    const auto value = number(smallest, largest);
    if (value && std::floor(*value) == *value) return static_cast<int>(*value);
    return error(fmt::format("must be a whole number from {} to {}", smallest, largest));
}

Result<bool> JsonPlace::truth() const {
    if (!value_->is_boolean()) return error("must be true or false");
    return value_->get<bool>();
}

Result<std::vector<JsonPlace>> JsonPlace::list(std::size_t most) const {
    if (!value_->is_array()) return error("must be a list");
    if (value_->size() > most) return error(fmt::format("must have at most {} elements", most));
    std::vector<JsonPlace> places;
    for (std::size_t i = 0; i < value_->size(); ++i) {
        JsonPlace place((*value_)[i], file_);
        place.pointer_ = fmt::format("{}/{}", pointer_, i);
        places.push_back(std::move(place));
    }
    return places;
}

Result<void> JsonPlace::object(std::initializer_list<std::string_view> known) const {
    if (!value_->is_object()) return error("must be an object");
    for (const auto& [name, value] : value_->items()) {
        if (std::ranges::find(known, name) != known.end()) continue;
        return fail(fmt::format("{}: {}/{}: is not a member that this object can have", file_,
                                pointer_, token(name)));
    }
    return {};
}

std::optional<JsonPlace> JsonPlace::find(std::string_view name) const {
    if (!value_->is_object()) return std::nullopt;
    const auto found = value_->find(name);
    if (found == value_->end()) return std::nullopt;
    JsonPlace place(*found, file_);
    place.pointer_ = pointer_ + "/" + token(name);
    return place;
}

Result<JsonPlace> JsonPlace::member(std::string_view name) const {
    if (auto place = find(name)) return *std::move(place);
    return fail(fmt::format("{}: {}/{}: is missing", file_, pointer_, token(name)));
}

}  // namespace tandrel
