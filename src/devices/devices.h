#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "base/mutex.h"
#include "base/serial_queue.h"
#include "devices/device.h"
#include "devices/matcher.h"
#include "devices/pairings_file.h"
#include "devices/phone_use.h"
#include "hid/hid_peripheral.h"
#include "screen/screen_capture.h"

namespace tandrel {

// The phones: which screen belongs to which Bluetooth host, and the input channel of each host.
//
// A cabled screen is one phone's for good, so its host is remembered. Whose a mirrored picture is,
// nobody says: its host is found anew each time it appears, or is the only one there is. While a
// cable is plugged in, a mirrored picture counts only once its host is known to be another phone's.
// Collaborators outlive it. Any thread, except that `match` and `input(device)` block and must not
// be called from the HID peripheral's or a screen's queue.
class Devices {
 public:
    struct Options {
        std::filesystem::path pairingsFile;
        // Whether a phone's pointer may be moved to find out whose it is (not while paused).
        std::function<bool()> mayMove = [] { return true; };
    };

    Devices(HIDPeripheral& hid, ScreenCapture& screens, Options options, Clock& clock);
    ~Devices();
    Devices(const Devices&) = delete;
    Devices& operator=(const Devices&) = delete;

    static Devices& shared();
    static void setShared(Devices* instance);

    // Loads the pairings and follows hosts and screens from now on.
    void start();
    // Ends matching and every action under way; nothing is matched afterwards. Bounded.
    void stop();

    // Ends every action under way, which fails, and releases what it holds. Bounded.
    void letGo();

    std::vector<Device> all();
    // Connected hosts that drive no present screen.
    std::vector<Uuid> unmatchedHosts();
    Result<Device> find(const std::string& wanted);

    // The phone's host, found by matching if it must be. Blocks then.
    Result<Uuid> hostOf(const Device& device);
    std::shared_ptr<Input> input(const Uuid& host);

    // Fails when the pairing holds now but could not be kept for the next start.
    Result<void> pair(const Device& device, const Uuid& host);

    struct Match {
        bool force = false;
        bool probe = false;
        // How long an action under way on a phone is waited for.
        Duration patience{};
    };
    // Runs matching on the match queue, waits for it, and returns the pairs it made.
    Result<Pairings> match(const Match& how);
    // One run 1.5 s from now, however often it is asked for before.
    void scheduleMatch();

    // Keeps matching off a phone while an action is under way on it.
    PhoneUse& use() { return use_; }

 private:
    MatchOutcome runMatch(const MatchOptions& options) RUNS_ON(matchQueue_);
    void keep(const Pairings& made);
    // Takes the pairs over and each host away from the other screens that are present. Returns all.
    Pairings pairOnly(const Pairings& made);
    void keepMirrored(const Pairings& made);
    MatchOutcome matchCabled(const std::vector<std::shared_ptr<Screen>>& screens,
                             const std::vector<Uuid>& hosts, MatchOptions options)
        RUNS_ON(matchQueue_);
    MatchOutcome matchMirrored(const std::vector<std::shared_ptr<Screen>>& screens,
                               const std::vector<Uuid>& hosts, MatchOptions options)
        RUNS_ON(matchQueue_);
    std::vector<Device> list(const std::vector<Uuid>& hosts);

    HIDPeripheral& hid_;
    ScreenCapture& screens_;
    const Options options_;
    Clock& clock_;
    PhoneUse use_;
    std::stop_source stopping_;
    Mutex mutex_;
    Pairings pairings_ OWNED_BY(mutex_);
    Pairings mirroredPairings_ OWNED_BY(mutex_);  // of pictures that were seen to follow a host
    std::map<Uuid, std::shared_ptr<Input>> inputs_ OWNED_BY(mutex_);
    bool scheduled_ OWNED_BY(mutex_) = false;
    Mutex fileMutex_;  // one store at a time, in the order of the changes
    Matcher matcher_;
    SerialQueue matchQueue_;
};

}  // namespace tandrel
