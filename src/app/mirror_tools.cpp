#include "app/mirror_tools.h"

#include <iostream>
#include <memory>

#include "app/wiring.h"
#include "platform/linux/chosen_languages.h"
#include "platform/linux/signals.h"
#include "platform/linux/sock_diag_peer_identity.h"
#include "platform/linux/x_synthetic_input.h"
#include "platform/virtual/virtual_platform.h"
#include "screen/mirror_command.h"

namespace tandrel {
namespace {

// What stands behind the platform's headers while a tool runs, opened by the tools that need it:
// those that read a file touch neither display nor cable.
class ToolPlatform {
 public:
    Result<MirrorPlatform> open() {
        // Before any thread is started.
        signals_ = std::make_unique<StopSignals>();
        TRY_VOID(signals_->deliver([this] { stopping_.request_stop(); }));
        const AppInfo info = AppInfo::ofThisProgram();
        auto backends = TRY(Backends::open(info, systemClock()));
        backends_ = std::make_unique<Backends>(std::move(backends));
        return MirrorPlatform{.capture = *backends_->capture,
                              .windows = *backends_->windows,
                              .receiver = backends_->receiver.get(),
                              .permissions = *backends_->permissions,
                              .peers = &peers_,
                              .clock = systemClock(),
                              .stopping = stopping_.get_token(),
                              .version = info.version};
    }

    Result<std::unique_ptr<SyntheticInput>> openInput() const {
        if (!backends_ || !backends_->virtualPhones) return XSyntheticInput::open();
        return fail(
            "this tool's own virtual iPhone has no window on the desktop: drive that of a "
            "running tandrel-app, with TANDREL_VIRTUAL_PHONE unset here");
    }

 private:
    std::stop_source stopping_;
    SockDiagPeerIdentity peers_;
    std::unique_ptr<StopSignals> signals_;
    std::unique_ptr<Backends> backends_;
};

}  // namespace

std::optional<int> runMirrorTool(const Arguments& arguments) {
    auto makeRecognizer = []() -> Result<std::unique_ptr<TextRecognizer>> {
        const auto settings = std::make_shared<JsonUserDefaults>(AppFiles::of({}).settings);
        return std::make_unique<ChosenLanguages>(
            [settings] { return settings->textValue("languages").value_or("eng"); });
    };
    ToolPlatform platform;
    MirrorServices services{.out = std::cout,
                            .err = std::cerr,
                            .makeRecognizer = makeRecognizer,
                            .openPlatform = [&] { return platform.open(); },
                            .openInput = [&] { return platform.openInput(); }};
    return mirrorCommand(arguments, services);
}

}  // namespace tandrel
