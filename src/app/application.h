#pragma once

#include "app/modes.h"

namespace tandrel {

// The application itself: starts the engine and runs until it is told to end. With a display it has
// windows, without one it runs headless. Returns the exit status.
int runApplication(const Arguments& arguments);

}  // namespace tandrel
