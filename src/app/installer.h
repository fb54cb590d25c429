#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "base/app_info.h"
#include "base/clock.h"
#include "base/result.h"
#include "platform/processes.h"

namespace tandrel {

// Puts this copy of the application where applications belong, so that the AI apps can rely on its
// path, and starts the application anew. Any thread.
class Installer {
 public:
    // The folders of this user that an application is spread over.
    struct Places {
        std::filesystem::path applications;  // holds the app directory
        std::filesystem::path dataHome;      // holds applications/, icons/ and Trash/

        static Places ofThisUser();
    };

    Installer(AppInfo info, Places places, Processes& processes, Clock& clock)
        : info_(std::move(info)),
          places_(std::move(places)),
          processes_(processes),
          clock_(clock) {}

    // Whether an app directory lies where it may not stay: on a medium, or among downloads or
    // temporary files. AI apps should not be pointed at it there.
    static bool isInPassing(const std::filesystem::path& bundle, const std::filesystem::path& home);

    std::filesystem::path destination() const { return places_.applications / "Tandrel"; }

    // Copies this app directory to the applications folder, with an entry in the desktop's menu; a
    // copy that lies there already goes to the trash. Then starts the new copy; this one is to quit
    // kQuitAfter later. Absent on success, else the sentence to show.
    std::optional<std::string> moveToApplications();
    static constexpr Duration kQuitAfter = std::chrono::milliseconds(500);

    // Starts this copy once more after a delay, in which it is to quit.
    Result<void> relaunch(int afterSeconds);

 private:
    Result<void> copy() const;
    Result<void> addToMenu() const;

    const AppInfo info_;
    const Places places_;
    Processes& processes_;
    Clock& clock_;
};

}  // namespace tandrel
