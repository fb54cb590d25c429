#pragma once

#include "aiconnect/ai_connect.h"
#include "app/status_helper_check.h"
#include "app/wiring.h"
#include "platform/linux/child_processes.h"
#include "platform/linux/desktop_applications.h"
#include "platform/linux/json_user_defaults.h"
#include "platform/linux/proc_running_applications.h"
#include "platform/linux/xattr_extended_attributes.h"

namespace tandrel {

// What the owner's side of the program is made of, in the application as in the modes that run
// without an engine: this computer's services and, on top, the helper check and the AI apps.
class OwnerServices {
 public:
    explicit OwnerServices(const AppInfo& info, Clock& clock)
        : files_(AppFiles::of(info)),
          defaults_(files_.settings, clock),
          installed_(processes_, DesktopApplications::dataFoldersOfThisUser()),
          helper_(info, {processes_, defaults_, attributes_}),
          ai_(info.cliPath(), AIConnectPlaces::fromEnvironment(),
              {processes_, installed_, running_, clock, stopping_.get_token()}) {}

    // Programs that are waited for end soon. Any thread.
    void stop() { stopping_.request_stop(); }

    const AppFiles& files() const { return files_; }
    UserDefaults& defaults() { return defaults_; }
    Processes& processes() { return processes_; }
    RunningApplications& running() { return running_; }
    const HelperCheck& helper() const { return helper_; }
    const AIConnect& ai() const { return ai_; }

 private:
    std::stop_source stopping_;
    const AppFiles files_;
    JsonUserDefaults defaults_;
    ChildProcesses processes_;
    XattrExtendedAttributes attributes_;
    DesktopApplications installed_;
    ProcRunningApplications running_;
    const HelperCheck helper_;
    const AIConnect ai_;
};

}  // namespace tandrel
