#pragma once

#include "base/json.h"
#include "screen/mirror_command.h"

// What each command-line tool does. `args` holds the operands that its usage asks for. The result
// is printed; an error is the sentence that says why there is none.
namespace tandrel::tools {

// Pictures from files (mirror_files.cpp).
Result<Json> ocr(const MirrorArgs& args, MirrorServices& services);
Result<Json> detectRect(const MirrorArgs& args, MirrorServices& services);

// One still (mirror_stills.cpp).
Result<Json> usbCapture(const MirrorArgs& args, MirrorServices& services);
Result<Json> airplayCapture(const MirrorArgs& args, MirrorServices& services);

// What there is, and what is allowed (mirror_lists.cpp).
Result<Json> find(const MirrorArgs& args, MirrorServices& services);
Result<Json> usbList(const MirrorArgs& args, MirrorServices& services);
Result<Json> airplayList(const MirrorArgs& args, MirrorServices& services);
Result<Json> trusted(const MirrorArgs& args, MirrorServices& services);
Result<Json> accessibility(const MirrorArgs& args, MirrorServices& services);
Result<Json> screen(const MirrorArgs& args, MirrorServices& services);
Result<Json> camera(const MirrorArgs& args, MirrorServices& services);

// Driving the mirroring window (mirror_control.cpp).
Result<Json> click(const MirrorArgs& args, MirrorServices& services);
Result<Json> drag(const MirrorArgs& args, MirrorServices& services);
Result<Json> type(const MirrorArgs& args, MirrorServices& services);
Result<Json> key(const MirrorArgs& args, MirrorServices& services);
Result<Json> activate(const MirrorArgs& args, MirrorServices& services);

// Pictures again and again (mirror_serve.cpp).
Result<Json> usbServe(const MirrorArgs& args, MirrorServices& services);
Result<Json> airplayServe(const MirrorArgs& args, MirrorServices& services);
Result<Json> captureLatency(const MirrorArgs& args, MirrorServices& services);

}  // namespace tandrel::tools
