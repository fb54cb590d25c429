#pragma once

#include <memory>
#include <string>

#include <sdbus-c++/sdbus-c++.h>

#include "base/result.h"

namespace tandrel {

// A new connection to the system's message bus or, if an address is given, to the bus there. The
// error is the bus library's own sentence.
Result<std::unique_ptr<sdbus::IConnection>> openSystemBus(const std::string& address = "");

}  // namespace tandrel
