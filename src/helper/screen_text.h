#pragma once

#include <string>

#include "helper/picture.h"

namespace tandrel {

// What the assistant reads beside a picture: whose it is, its size and age.
std::string captionOf(const Picture& picture);

// The text that was recognised on it, a line each with its place in the picture's pixels, and where
// nothing could be read. Text from the screen stands in quotation marks with its control characters
// escaped, so that it cannot pass for ours.
std::string screenTextOf(const Picture& picture);

}  // namespace tandrel
