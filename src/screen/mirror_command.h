#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/result.h"
#include "platform/airplay_receiver.h"
#include "platform/capture_devices.h"
#include "platform/peer_identity.h"
#include "platform/permissions.h"
#include "platform/synthetic_input.h"
#include "platform/text_recognizer.h"
#include "platform/windows.h"
#include "screen/mirror_args.h"

// The command-line tools for looking at a phone's screen without the application.
namespace tandrel {

// The services of the system that tools which look at a phone need.
struct MirrorPlatform {
    CaptureDevices& capture;
    Windows& windows;
    AirPlayReceiver* receiver;  // none: no receiver of our own is there
    Permissions& permissions;
    PeerIdentity* peers;  // as HTTPServer's
    Clock& clock;
    std::stop_token stopping;  // requested when the person ends the tool
    std::string version;
};

// What the tools need from outside. Each function is called by the tools that need it, at most once
// each; what it returns lives until the tool has ended.
struct MirrorServices {
    std::ostream& out;  // the result, and nothing else
    std::ostream& err;  // everything meant for a person
    std::function<Result<std::unique_ptr<TextRecognizer>>()> makeRecognizer;
    std::function<Result<MirrorPlatform>()> openPlatform = {};
    std::function<Result<std::unique_ptr<SyntheticInput>>()> openInput = {};
};

// Runs the tool that `args[0]` names and returns its exit status, 0 for success; none when no tool
// has that name. A failure is one line on `err`.
std::optional<int> mirrorCommand(const MirrorArgs& args, MirrorServices& services);

}  // namespace tandrel
