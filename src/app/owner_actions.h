#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

#include "aiconnect/ai_connect.h"
#include "app/app_state.h"
#include "base/serial_queue.h"
#include "engine/engine.h"
#include "platform/main_loop.h"
#include "platform/processes.h"
#include "platform/running_applications.h"

namespace tandrel {

// What the owner sets off in the menu and in the windows. Every call returns at once; what takes
// time happens on a thread of its own, one thing after another, and `done` is called on the main
// thread with what came of it. Main thread.
class OwnerActions {
 public:
    struct Services {
        AppState& state;
        Engine& engine;
        UserDefaults& defaults;
        const AIConnect& ai;
        RunningApplications& running;
        Processes& processes;
        MainLoop& loop;
        Clock& clock;
        std::function<void()> reopen;  // ends this copy and starts it afresh
        std::function<std::optional<std::string>()> moveToApplications;
    };
    // Whether it worked, and a sentence for the owner; empty when there is nothing to say.
    using Outcome = AIConnect::Outcome;
    using Done = std::function<void(const Outcome& outcome)>;

    explicit OwnerActions(Services services);
    // Waits for what is under way; no `done` is called any more.
    ~OwnerActions();
    OwnerActions(const OwnerActions&) = delete;
    OwnerActions& operator=(const OwnerActions&) = delete;

    void setPaused(bool paused, Done done = {});
    void setLink(LinkChoice link, Done done = {});
    void setAskBeforePayments(bool ask, Done done = {});
    void setAskWhenUnsure(bool ask, Done done = {});
    void setSetupDone(bool isDone, Done done = {});

    // Adds Tandrel to the app's settings; the sentence is shown as it stands.
    void addTo(AIApp app, Done done);
    void leaveOut(AIApp app, Done done);
    void restartClaudeDesktop(Done done);

    // What stands behind a notice's button. Those that open a window of ours (`showScreen`,
    // `checkPointer`, `test`) are for the windows themselves and do nothing here.
    void fix(Fix fix, Done done = {});

 private:
    using Work = std::function<Outcome()>;

    void change(std::function<Result<void>(UserDefaults&)> setting, Done done);
    void run(Work work, Done done);
    Outcome matchAgain() const;
    Outcome openBluetoothSettings() const;
    Outcome quitOthers();

    const Services to_;
    std::stop_source stopping_;
    const std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
    SerialQueue queue_;
};

}  // namespace tandrel
