#pragma once

#include "screen/mirror_command.h"

namespace tandrel {

// The phone on a cable that "--device" names by its id or name, else the first one, waited for as
// long as "--timeout" says.
Result<CaptureDeviceInfo> findIPhone(const MirrorArgs& args, const MirrorPlatform& platform);

}  // namespace tandrel
