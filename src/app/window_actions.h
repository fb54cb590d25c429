#pragma once

#include <functional>

#include "aiconnect/ai_connect.h"
#include "app/app_snapshot.h"

namespace tandrel {

// What the menu and the windows set off. Everything is called on the main thread and returns at
// once; what came of it shows in the application model.
class WindowActions {
 public:
    virtual ~WindowActions() = default;
    virtual void setPaused(bool paused) = 0;
    virtual void setAskBeforePayments(bool ask) = 0;
    virtual void setAskWhenUnsure(bool ask) = 0;
    virtual void setAutostart(bool on) = 0;
    virtual bool autostart() const = 0;
    virtual void chooseLink(LinkChoice link) = 0;
    // What stands behind a notice's button.
    virtual void fix(Fix fix) = 0;
    // `done` comes on the main thread with the sentence to show.
    using Done = std::function<void(const AIConnect::Outcome& outcome)>;
    virtual void addToApp(AIApp app, Done done) = 0;
    // The owner took our entry out of the app's settings on purpose.
    virtual void leaveOut(AIApp app) = 0;
    virtual void restartClaudeDesktop(Done done) = 0;
    virtual void startTest() = 0;
    virtual void finishSetup() = 0;
    virtual void quit() = 0;
};

}  // namespace tandrel
