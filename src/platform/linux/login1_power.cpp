#include "platform/linux/login1_power.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <pthread.h>

#include "base/log.h"
#include "platform/linux/system_bus.h"

namespace tandrel {
namespace {

constexpr const char* kLoginService = "org.freedesktop.login1";
constexpr const char* kLoginPath = "/org/freedesktop/login1";
constexpr const char* kLoginInterface = "org.freedesktop.login1.Manager";
// Also the longest that the end of the program waits for a bus that does not answer.
constexpr std::chrono::milliseconds kLongestCall{500};

void complain(const std::string& why) { log("power: sleep and wake can't be noticed: " + why); }

}  // namespace

Login1Power::Login1Power(MainLoop& loop) : loop_(loop) {
    auto bus = openSystemBus();
    if (!bus) {
        complain(bus.error().message);
        return;
    }
    bus_ = *std::move(bus);
    thread_ = std::thread([this] { watch(); });
    pthread_setname_np(thread_.native_handle(), "login1");
}

Login1Power::~Login1Power() {
    if (!thread_.joinable()) return;
    bus_->leaveEventLoop();
    thread_.join();
}

void Login1Power::setOnSleep(std::function<void()> willSleep) {
    callbacks_->willSleep = std::move(willSleep);
}

void Login1Power::setOnWake(std::function<void()> didWake) {
    callbacks_->didWake = std::move(didWake);
}

void Login1Power::watch() {
    try {
        bus_->setMethodCallTimeout(kLongestCall);
        subscribe();
        takeInhibitor();
        bus_->enterEventLoop();
    } catch (const sdbus::Error& error) {
        complain(error.getMessage());
    }
    manager_.reset();
    inhibitor_.reset();
}

void Login1Power::subscribe() {
    manager_ = sdbus::createProxy(*bus_, kLoginService, kLoginPath);
    manager_->uponSignal("PrepareForSleep")
        .onInterface(kLoginInterface)
        .call([this](bool goingToSleep) { prepareForSleep(goingToSleep); });
    manager_->finishRegistration();
    // A manager that starts, or starts anew, knows nothing of inhibitors from before.
    bus_->addMatch(
        fmt::format("type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
                    "member='NameOwnerChanged',arg0='{}'",
                    kLoginService),
        [this](sdbus::Message& message) {
            std::string name, before, now;
            message >> name >> before >> now;
            if (!now.empty()) takeInhibitor();
        },
        sdbus::floating_slot);
}

void Login1Power::takeInhibitor() {
    manager_->callMethodAsync("Inhibit")
        .onInterface(kLoginInterface)
        .withTimeout(kLongestCall)
        .withArguments(std::string("sleep"), std::string("Tandrel"),
                       std::string("Control of the phone is handed back first"),
                       std::string("delay"))
        .uponReplyInvoke([this](const sdbus::Error* error, const sdbus::UnixFd& inhibitor) {
            if (error != nullptr) {
                log("power: the computer won't wait before it sleeps: " + error->getMessage());
                return;
            }
            // The library's own duplicate would be inherited by programs that are started.
            inhibitor_ =
                std::make_shared<FileDescriptor>(::fcntl(inhibitor.get(), F_DUPFD_CLOEXEC, 0));
        });
}

// The task for the main thread takes the inhibitor along, so that it is given back when `willSleep`
// has returned, or when the task is dropped.
void Login1Power::prepareForSleep(bool goingToSleep) {
    const std::weak_ptr<Callbacks> weak = callbacks_;
    if (goingToSleep) {
        loop_.post([weak, inhibitor = std::exchange(inhibitor_, nullptr)] {
            const auto callbacks = weak.lock();
            if (callbacks && callbacks->willSleep) callbacks->willSleep();
        });
    } else {
        loop_.post([weak] {
            const auto callbacks = weak.lock();
            if (callbacks && callbacks->didWake) callbacks->didWake();
        });
        takeInhibitor();
    }
}

}  // namespace tandrel
