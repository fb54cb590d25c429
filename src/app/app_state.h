#pragma once

#include <functional>
#include <memory>
#include <stop_token>

#include "aiconnect/ai_connect.h"
#include "app/app_snapshot.h"
#include "base/mutex.h"
#include "base/serial_queue.h"
#include "platform/main_loop.h"
#include "platform/usb_registry.h"
#include "platform/user_defaults.h"

namespace tandrel {

// The application model: knows at any moment what the windows, the menu and the diagnosis show. It
// asks the engine over HTTP about once a second, as any other program would, and this computer for
// the rest, on threads of its own, so that no window ever waits.
class AppState {
 public:
    struct Services {
        UserDefaults& defaults;
        Permissions& permissions;
        UsbRegistry& usb;
        const HelperCheck& helper;
        const AIConnect& ai;
        MainLoop& loop;
        Clock& clock;
    };
    struct Options {
        std::string advertisedName;  // this computer's Bluetooth name
        std::string macName;
        // Whether a phone that works is remembered for the next start; not one that is virtual.
        enum class Health { remembered, forgotten };
        Health health = Health::remembered;
        // Whether this copy will stay where it is.
        enum class Place { lasting, passing };
        Place place = Place::lasting;
    };

    // Collaborators outlive it. Main thread.
    AppState(Services services, Options options);
    ~AppState();
    AppState(const AppState&) = delete;
    AppState& operator=(const AppState&) = delete;

    // The instance that the wiring built; it must have been set.
    static AppState& shared();
    static void setShared(AppState* instance);

    // Once, when the engine has started: who serves its port, and where. Returns at once.
    void startPolling(EngineMode mode, const LoopbackUrl& engine);
    // No poll and no call of a listener comes afterwards. Main thread; safe to repeat.
    void stop();

    // Any thread, at once.
    AppSnapshot snapshot() const;

    // Calls `changed` on the main thread after each change, and once soon after this call, for as
    // long as the returned handle lives. Main thread.
    using Listener = std::function<void(const AppSnapshot& now)>;
    [[nodiscard]] std::shared_ptr<void> listen(Listener changed);

    // Asks everything again now instead of in a second: after the owner did something. Any thread.
    void refresh();
    // Runs the helper to see whether it starts. Any thread; returns at once.
    void checkHelper();

    // What the phone test found. Any thread.
    void setTestPassed(bool passed);
    void setScreenState(PhoneScreen state);
    void setAssistiveTouchOn();
    // The owner has been through the setup; kept for the next start. Any thread; may wait for a
    // file.
    Result<void> setSetupDone(bool done);

    // Between the polls of the engine, and between the looks at what takes longer.
    static constexpr Duration kPollInterval = std::chrono::seconds(1);
    static constexpr Duration kSlowInterval = std::chrono::seconds(4);

 private:
    struct Listeners;

    void pollAgain() RUNS_ON(queue_);
    void poll() RUNS_ON(queue_);
    void lookSlowlyAgain() RUNS_ON(slowQueue_);
    void lookSlowly() RUNS_ON(slowQueue_);
    void readScreenIfStale() RUNS_ON(slowQueue_);
    void keepTrackOf(std::vector<AIAppStatus>& apps) RUNS_ON(slowQueue_);
    void runHelper() RUNS_ON(slowQueue_);
    HelperCheck::State helperState() const RUNS_ON(slowQueue_);
    // Changes the snapshot and tells the listeners if that made a difference.
    void change(const std::function<void(AppSnapshot&)>& edit);

    const Services to_;
    const Options options_;
    const std::shared_ptr<Listeners> listeners_;
    std::stop_source stopping_;
    mutable Mutex mutex_;
    AppSnapshot snapshot_ OWNED_BY(mutex_);

    std::optional<LoopbackUrl> engine_ OWNED_BY(queue_);
    std::optional<LoopbackUrl> slowEngine_ OWNED_BY(slowQueue_);
    std::optional<HelperCheck::State> helperRun_ OWNED_BY(slowQueue_);
    std::optional<std::filesystem::path> claude_ OWNED_BY(slowQueue_);
    std::string problemOfEntries_ OWNED_BY(slowQueue_);
    SerialQueue slowQueue_;
    SerialQueue queue_;
};

}  // namespace tandrel
