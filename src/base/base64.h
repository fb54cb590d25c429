#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/bytes.h"

namespace tandrel {

// Base 64 with padding and without line breaks (RFC 4648).
std::string base64(const Bytes& bytes);
// None when the text is not exactly that.
std::optional<Bytes> fromBase64(std::string_view text);

}  // namespace tandrel
