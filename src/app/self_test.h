#pragma once

#include "base/app_info.h"

namespace tandrel {

// Runs the fixtures that ship with the program and says what it ran; 0 when all pass.
int runSelfTest(const AppInfo& info);

}  // namespace tandrel
