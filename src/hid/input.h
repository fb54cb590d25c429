#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/clock.h"
#include "base/result.h"
#include "base/uuid.h"

namespace tandrel {

class HIDPeripheral;

// A place on the phone's screen as fractions of its width and height, 0 to 1 from the top left.
struct ScreenPoint {
    double x = 0;
    double y = 0;
};

// CONTRACT SKETCH: the hid room fills this in.
class Input {
 public:
    Input(HIDPeripheral& hid, const Uuid& host, Clock& clock);

    // Every action blocks until its reports are sent and its pauses have passed. The error is the
    // sentence for the assistant; nothing was sent then.
    Result<void> move(ScreenPoint to);
    Result<void> tap(ScreenPoint at, double holdSeconds = 0.08);
    Result<void> swipe(ScreenPoint from, ScreenPoint to, double durationSeconds);
    enum class Click { no, yes };
    Result<void> nudge(int dx, int dy, Click click);
    Result<void> type(std::string_view text);
    Result<void> key(std::string_view name, const std::vector<std::string>& modifiers);
    Result<void> consumer(std::uint16_t usage);

    // Where the pointer of this phone is known to be; none before the first absolute move and after
    // a relative one.
    std::optional<ScreenPoint> pointer() const;
    // Ends an action under way, releases what is held, and makes later actions fail.
    void stop();
};

}  // namespace tandrel
