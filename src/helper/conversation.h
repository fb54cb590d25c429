#pragma once

#include <string>

#include "helper/tool.h"

namespace tandrel {

// Speaks with an app over two file descriptors until it closes its side, then ends what is under
// way. Nothing but messages is written to `output`. Both may be of any kind.
void converse(int input, int output, const std::string& version, CallTimes times = {});

}  // namespace tandrel
