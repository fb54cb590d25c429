#pragma once

#include <filesystem>
#include <memory>

#include "base/clock.h"
#include "base/json.h"
#include "base/mutex.h"
#include "platform/linux/file_stamp.h"
#include "platform/user_defaults.h"

namespace tandrel {

// The settings as one JSON object in one file, which the owner may edit by hand and which other
// copies of the program write, too. A file that is not such an object holds no setting, and it is
// never lost: before `set` puts a new file in its place, the old one gets a second name beside it
// ("settings.json.broken", "settings.json.broken-2", ...). Writers take turns by a lock on
// "settings.json.lock".
class JsonUserDefaults final : public UserDefaults {
 public:
    explicit JsonUserDefaults(std::filesystem::path file, Clock& clock = systemClock());

    static constexpr std::size_t kLargestFile = 1024 * 1024;
    static constexpr int kMostBroken = 100;
    static constexpr Duration kLongestLockWait = std::chrono::seconds(2);

    std::optional<bool> boolValue(std::string_view key) const override;
    std::optional<std::string> textValue(std::string_view key) const override;
    using UserDefaults::set;
    Result<void> set(std::string_view key, bool value) override;
    Result<void> set(std::string_view key, std::string value) override;

 private:
    struct Snapshot {
        FileStamp stamp;
        Json settings = Json::object();
    };

    std::shared_ptr<const Snapshot> snapshot() const;
    Result<void> change(std::string_view key, Json value);
    Result<Json> settingsToChange() const;

    const std::filesystem::path path_;
    Clock& clock_;
    mutable Mutex mutex_;
    mutable std::shared_ptr<const Snapshot> latest_ OWNED_BY(mutex_);
};

}  // namespace tandrel
