#pragma once

#include <functional>
#include <memory>

#include "base/clock.h"
#include "platform/main_loop.h"
#include "platform/power.h"

namespace tandrel {

// Three clocks read together: one stands still while the computer sleeps, one does not, and one is
// set right afterwards where a virtual machine's sleep is hidden from the other two.
struct ClockReadings {
    Duration monotonic{};
    Duration sinceBoot{};
    Duration wall{};

    static ClockReadings now();
};

// Sleep and wake as another service tells them, and a jump of the clocks as a wake, too: not every
// system has a service that tells, and a virtual machine's or a stopped program's pause has none.
class ClockJumpPower final : public Power {
 public:
    using Read = std::function<ClockReadings()>;
    // Main thread; both outlive this object.
    ClockJumpPower(Power& told, MainLoop& loop, Read read = ClockReadings::now);
    ~ClockJumpPower() override;
    ClockJumpPower(const ClockJumpPower&) = delete;
    ClockJumpPower& operator=(const ClockJumpPower&) = delete;

    static constexpr Duration kBetweenLooks = std::chrono::seconds(5);
    static constexpr Duration kShortestSleep = std::chrono::seconds(2);
    // By which the wall clock or the time between two looks must have jumped.
    static constexpr Duration kShortestPause = std::chrono::seconds(30);

    void setOnSleep(std::function<void()> willSleep) override;
    void setOnWake(std::function<void()> didWake) override;

 private:
    void look();

    Power& told_;
    const Read read_;
    ClockReadings last_;
    std::function<void()> didWake_;
    std::unique_ptr<Timer> timer_;
};

}  // namespace tandrel
