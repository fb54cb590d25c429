#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "base/clock.h"
#include "base/mutex.h"
#include "base/result.h"
#include "base/serial_queue.h"
#include "base/uuid.h"
#include "hid/screen_point.h"
#include "hid/sequences.h"

namespace tandrel {

class HIDPeripheral;

// What an assistant does on one phone, turned into reports that follow one another as fast as a
// phone takes them.
//
// Every action blocks until its reports are sent and its pauses have passed; it does not wait for
// delivery, and a phone that is not connected misses them silently. Actions called at once on the
// same Input run one after the other, those of different phones side by side. An error of an action
// is the sentence for the assistant; when the arguments are at fault nothing was sent. Any thread.
class Input {
 public:
    // `hid` and `clock` outlive the Input, and every action has returned before it ends.
    Input(HIDPeripheral& hid, const Uuid& host, Clock& clock);
    ~Input();
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    // The longest hold or drag.
    static constexpr double kLongestSeconds = 60;
    // The longest nudge along either axis, in mouse counts.
    static constexpr int kFarthestNudge = 20'000;
    // User-perceived characters in one text; as many take ten minutes and more.
    static constexpr std::size_t kLongestText = 10'000;

    const Uuid& host() const { return host_; }

    // The pause between two reports in seconds, 0.03 at first. Setting holds for later actions;
    // what is not between 0.001 and 1 becomes the nearer of the two.
    double step() const { return step_; }
    void setStep(double seconds);

    // Coordinates outside 0 to 1 are the screen's edge.
    Result<void> move(ScreenPoint to);
    Result<void> tap(ScreenPoint at, double holdSeconds = 0.08);
    Result<void> swipe(ScreenPoint from, ScreenPoint to, double durationSeconds);
    // Moves by mouse counts, to which the phone applies its own acceleration, and clicks there.
    enum class Click { no, yes };
    Result<void> nudge(int dx, int dy, Click click);
    // Refused as a whole when one character is not on a US keyboard.
    Result<void> type(std::string_view text);
    // A key by name or by its character, in which case the Shift that the character would need is
    // left out; modifiers by name. Names in any case.
    Result<void> key(std::string_view name, const std::vector<std::string>& modifiers);
    // What `key` would press; who judges keys before they are pressed asks the same.
    static Result<Keymap::Stroke> keyStroke(std::string_view name,
                                            const std::vector<std::string>& modifiers);
    // Presses one usage of the Consumer page.
    Result<void> consumer(std::uint16_t usage);

    // Where the pointer of this phone is known to be; none before the first absolute move, after a
    // relative one, and once the phone's connection has been interrupted. Waits for the
    // peripheral's queue.
    std::optional<ScreenPoint> pointer() const;

    // Ends an action under way, releases what it holds, and waits for its end. It and all later
    // ones fail with 503.
    void stop();

 private:
    struct KnownPointer {
        ScreenPoint place;
        std::uint64_t link = 0;
    };

    Result<void> play(const Sequence& sequence);
    Result<void> playOnQueue(const Sequence& sequence) RUNS_ON(queue_);
    void send(const Report& report) RUNS_ON(queue_);
    void trackPointer(const Step& step, std::optional<std::uint64_t> link) RUNS_ON(queue_);

    HIDPeripheral& hid_;
    const Uuid host_;
    Clock& clock_;
    std::stop_source stop_;
    std::atomic<double> step_ = 0.03;

    mutable Mutex mutex_;
    std::optional<KnownPointer> pointer_ OWNED_BY(mutex_);

    SerialQueue queue_;
};

}  // namespace tandrel
