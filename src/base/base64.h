#pragma once

#include <string>

#include "base/bytes.h"

namespace tandrel {

// Base 64 with padding and without line breaks (RFC 4648).
std::string base64(const Bytes& bytes);

}  // namespace tandrel
