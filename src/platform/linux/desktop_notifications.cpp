#include "platform/linux/desktop_notifications.h"

#include <map>
#include <vector>

#include <canberra.h>
#include <sdbus-c++/sdbus-c++.h>

#include "base/log.h"
#include "base/serial_queue.h"

namespace tandrel {
namespace {

constexpr const char* kNotifyService = "org.freedesktop.Notifications";
constexpr const char* kNotifyPath = "/org/freedesktop/Notifications";
constexpr auto kCallTime = std::chrono::seconds(2);

class DesktopNotifications final : public Notifications {
 public:
    DesktopNotifications() : queue_("notifications") {}

    ~DesktopNotifications() override {
        queue_.stop();
        if (sound_ != nullptr) ca_context_destroy(sound_);
    }
    DesktopNotifications(const DesktopNotifications&) = delete;
    DesktopNotifications& operator=(const DesktopNotifications&) = delete;

    void post(const std::string& identifier, const std::string& title,
              const std::string& text) override {
        queue_.post([=, this] {
            queue_.assertCurrent();
            show(identifier, title, text);
        });
    }

    void withdraw(const std::string& identifier) override {
        queue_.post([=, this] {
            queue_.assertCurrent();
            close(identifier);
        });
    }

    void playAttentionSound() override {
        queue_.post([this] {
            queue_.assertCurrent();
            play();
        });
    }

 private:
    // The service, connected to on first use and again after it failed.
    sdbus::IProxy& service() RUNS_ON(queue_) {
        if (!proxy_) {
            proxy_ = sdbus::createProxy(sdbus::createSessionBusConnection(), kNotifyService,
                                        kNotifyPath);
        }
        return *proxy_;
    }

    void show(const std::string& identifier, const std::string& title, const std::string& text)
        RUNS_ON(queue_) {
        try {
            // urgency 2 is "critical": it stays until it is withdrawn
            const std::map<std::string, sdbus::Variant> hints = {
                {"urgency", sdbus::Variant(std::uint8_t{2})},
                {"desktop-entry", sdbus::Variant(std::string("tandrel"))}};
            std::uint32_t id = ids_[identifier];
            service()
                .callMethod("Notify")
                .onInterface(kNotifyService)
                .withTimeout(kCallTime)
                .withArguments(std::string("Tandrel"), id, std::string("tandrel"), title, text,
                               std::vector<std::string>{}, hints, std::int32_t{-1})
                .storeResultsTo(id);
            ids_[identifier] = id;
        } catch (const sdbus::Error& error) {
            giveUp(error);
        }
    }

    void close(const std::string& identifier) RUNS_ON(queue_) {
        const auto known = ids_.find(identifier);
        if (known == ids_.end()) return;
        try {
            service()
                .callMethod("CloseNotification")
                .onInterface(kNotifyService)
                .withTimeout(kCallTime)
                .withArguments(known->second);
        } catch (const sdbus::Error& error) {
            giveUp(error);
        }
        ids_.erase(identifier);
    }

    // A desktop without the service is said once, not at every question.
    void giveUp(const sdbus::Error& error) RUNS_ON(queue_) {
        proxy_.reset();
        if (std::exchange(saidAbsent_, true)) return;
        log("notifications: none on this desktop (" + error.getMessage() + ")");
    }

    void play() RUNS_ON(queue_) {
        if (sound_ == nullptr && ca_context_create(&sound_) != CA_SUCCESS) {
            sound_ = nullptr;
            return;
        }
        ca_context_play(sound_, 0, CA_PROP_EVENT_ID, "dialog-question", CA_PROP_MEDIA_ROLE, "event",
                        CA_PROP_EVENT_DESCRIPTION, "Tandrel asks about a payment", nullptr);
    }

    std::unique_ptr<sdbus::IProxy> proxy_ OWNED_BY(queue_);
    std::map<std::string, std::uint32_t> ids_ OWNED_BY(queue_);
    bool saidAbsent_ OWNED_BY(queue_) = false;
    ca_context* sound_ = nullptr;  // touched on the queue, and after it has stopped
    SerialQueue queue_;
};

}  // namespace

std::unique_ptr<Notifications> makeDesktopNotifications() {
    return std::make_unique<DesktopNotifications>();
}

}  // namespace tandrel
