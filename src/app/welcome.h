#pragma once

#include "base/app_info.h"

namespace tandrel {

class Wiring;

// Prints to standard output where the API listens, what the phone is called and what to try.
void sayWelcome(Wiring& wiring, const AppInfo& info);

}  // namespace tandrel
