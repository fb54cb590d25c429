#pragma once

#include <functional>
#include <memory>
#include <stop_token>

#include "app/app_state.h"
#include "app/phone_test.h"
#include "base/serial_queue.h"
#include "platform/main_loop.h"

namespace tandrel {

// The phone test for a window: runs on a thread of its own, one run at a time, and writes what it
// found into the application model. Main thread.
class PhoneTestRun {
 public:
    using Changed = PhoneTest::Changed;

    // `changed` is called on the main thread with the lines as they are. Collaborators outlive it.
    PhoneTestRun(AppState& state, EnginePlace place, MainLoop& loop, Clock& clock, Changed changed);
    // Cuts a test that runs short.
    ~PhoneTestRun();
    PhoneTestRun(const PhoneTestRun&) = delete;
    PhoneTestRun& operator=(const PhoneTestRun&) = delete;

    // Begins afresh; nothing while one runs.
    void start();
    // Only the step that looks for the pointer; `done` comes on the main thread.
    void checkPointer(std::function<void(const PhoneTest::PointerLook& look)> done);
    bool running() const { return progress_.running; }
    const PhoneTest::Progress& progress() const { return progress_; }

 private:
    void show(const PhoneTest::Progress& now);

    AppState& state_;
    const EnginePlace place_;
    MainLoop& loop_;
    Clock& clock_;
    const Changed changed_;
    PhoneTest::Progress progress_;
    const std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
    std::stop_source stopping_;
    SerialQueue queue_;
};

}  // namespace tandrel
