#include "app/application.h"

#include <algorithm>
#include <cstdio>

#include <fmt/format.h>

#include "app/app_delegate.h"
#include "app/brand.h"
#include "app/first_copy.h"
#include "app/owner_side.h"
#include "app/panel_asker.h"
#include "app/phone_window.h"
#include "app/qt_main_loop.h"
#include "app/terminal_asker.h"
#include "app/translations.h"
#include "app/welcome.h"
#include "app/wiring.h"
#include "base/log.h"
#include "platform/linux/desktop_notifications.h"
#include "platform/linux/display.h"
#include "platform/linux/linux_main_loop.h"
#include "platform/linux/portal_desktop_settings.h"
#include "platform/linux/process_limits.h"
#include "platform/linux/signals.h"
#include "platform/virtual/virtual_platform.h"

namespace tandrel {
namespace {

std::unique_ptr<MainLoop> makeMainLoop(bool hasDisplay, const AppInfo& info) {
    if (!hasDisplay) return std::make_unique<LinuxMainLoop>();
    auto loop = std::make_unique<QtMainLoop>();
    Brand::registerFonts(info.bundle / "share");
    installTranslations(info.bundle / "share");
    return loop;
}

// Who asks the owner: the panel where there is a display, the terminal only when the person who
// started the application said so, else nobody.
std::unique_ptr<Asker> makeAsker(bool hasDisplay, bool askHere, MainLoop& loop,
                                 Notifications& notifications, Clock& clock) {
    if (askHere) return std::make_unique<TerminalAsker>(clock);
    if (hasDisplay) return std::make_unique<PanelAsker>(loop, notifications, clock);
    return std::make_unique<NobodyAsker>(clock);
}

std::vector<std::unique_ptr<PhoneWindow>> openWindows(const Backends& backends, bool hasDisplay) {
    std::vector<std::unique_ptr<PhoneWindow>> windows;
    if (!hasDisplay || !backends.virtualPhones) return windows;
    for (const auto& phone : backends.virtualPhones->phones()) {
        windows.push_back(std::make_unique<PhoneWindow>(*phone));
        windows.back()->show();
    }
    return windows;
}

// Whether a copy that runs already has shown its window instead. Copies that take a free port each
// have nothing in common.
bool firstCopyShows(bool hasDisplay) {
    const EngineSettings settings = EngineSettings::fromEnvironment();
    if (!hasDisplay || settings.disabled || settings.port == 0) return false;
    return FirstCopy::ask(FirstCopy::meetingPlace(settings.port));
}

// Serves until the main loop is told to end.
int serve(Wiring& wiring, OwnerSide& owner, const AppInfo& info, MainLoop& loop, bool hasDisplay,
          const std::stop_token& stopping) {
    wiring.engine().start(stopping);
    owner.start();
    const auto windows = openWindows(wiring.backends(), hasDisplay);
    std::optional<AppDelegate> delegate;
    if (hasDisplay) {
        const ColorScheme appearance =
            Brand::colorScheme(PortalDesktopSettings().colorPreference());
        delegate.emplace(owner, info, appearance, loop, systemClock()).start();
    }
    sayWelcome(wiring, info);
    const int status = loop.run();
    delegate.reset();
    owner.stop();
    wiring.engine().stop();
    return status;
}

}  // namespace

int runApplication(const Arguments& arguments) {
    // Declared before what may call them from its own thread to the end.
    std::unique_ptr<MainLoop> loop;
    std::stop_source stopping;
    StopSignals stopSignals;
    raiseFileLimit();
    shareHeaps();
    Clock& clock = systemClock();
    const AppInfo info = AppInfo::ofThisProgram();
    AppLog::setShared(std::make_shared<AppLog>(AppFiles::of(info).log));
    const bool hasDisplay = prepareDisplay();
    if (firstCopyShows(hasDisplay)) {
        fmt::print("Tandrel is already running; its window has been opened.\n");
        return 0;
    }
    auto backends = Backends::open(info, clock);
    if (!backends) {
        fmt::print(stderr, "{}\n", backends.error().message);
        return 1;
    }
    const bool askHere = std::ranges::count(arguments, "--ask-here") > 0;
    loop = makeMainLoop(hasDisplay, info);
    const auto listening = stopSignals.deliver([&] {
        stopping.request_stop();
        loop->quit(0);
    });
    if (!listening) log(listening.error().message);
    const auto notifications = makeDesktopNotifications();
    const auto asker = makeAsker(hasDisplay, askHere, *loop, *notifications, clock);
    Wiring wiring(std::move(*backends), info, *loop, *asker, clock);
    OwnerSide owner(wiring, info, *loop, clock);
    const int status = serve(wiring, owner, info, *loop, hasDisplay, stopping.get_token());
    AppLog::setShared(nullptr);
    return status;
}

}  // namespace tandrel
