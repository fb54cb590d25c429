#pragma once

#include "app/modes.h"
#include "app/wiring.h"

namespace tandrel {

// `--set paused true|false`, `--set link cable|airplay` and so on: the owner's settings for a
// computer without a display. A running application follows at its next request. Returns the exit
// status.
int setSetting(const Arguments& arguments, const AppFiles& files);

}  // namespace tandrel
