#pragma once

#include <memory>

#include "platform/main_loop.h"

class QApplication;

namespace tandrel {

// The main loop of Qt, for a computer with a display. Make it on the main thread, before any window
// and after everything that changes the environment.
class QtMainLoop final : public MainLoop {
 public:
    QtMainLoop();
    ~QtMainLoop() override;

    void post(Task task) override;
    std::unique_ptr<Timer> after(Duration delay, Task task) override;
    std::unique_ptr<Timer> every(Duration interval, Task task) override;
    int run() override;
    void quit(int status) override;

 private:
    class Inbox;

    const std::unique_ptr<QApplication> application_;
    const std::unique_ptr<Inbox> inbox_;
};

}  // namespace tandrel
