#pragma once

#include "app/window_actions.h"

namespace tandrel {

// For windows that draw the same whatever their buttons would do.
class NoActions : public WindowActions {
 public:
    void setPaused(bool) override {}
    void setAskBeforePayments(bool) override {}
    void setAskWhenUnsure(bool) override {}
    void setAutostart(bool) override {}
    bool autostart() const override { return false; }
    void chooseLink(LinkChoice) override {}
    void fix(Fix) override {}
    void addToApp(AIApp, Done) override {}
    void leaveOut(AIApp) override {}
    void restartClaudeDesktop(Done) override {}
    void startTest() override {}
    void finishSetup() override {}
    void quit() override {}
};

}  // namespace tandrel
