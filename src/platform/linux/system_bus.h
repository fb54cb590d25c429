#pragma once

#include <memory>

#include <sdbus-c++/sdbus-c++.h>

#include "base/result.h"

namespace tandrel {

// A new connection to the system's message bus; DBUS_SYSTEM_BUS_ADDRESS may name another. The error
// is the bus library's own sentence.
Result<std::unique_ptr<sdbus::IConnection>> openSystemBus();

}  // namespace tandrel
