#pragma once

#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

#include "devices/pairings_file.h"
#include "devices/phone_use.h"
#include "hid/input.h"
#include "screen/screen.h"

namespace tandrel {

// What one matching run starts from.
struct MatchSituation {
    std::vector<std::shared_ptr<Screen>> screens;  // present now
    std::vector<Uuid> hosts;                       // connected now
    Pairings pairings;                             // known so far
};

struct MatchOptions {
    bool force = false;        // forget the pairings of every present screen first
    bool alwaysProbe = false;  // move the pointer even where there is only one possibility
    bool mayMove = true;       // false: pair only what needs no pointer movement
    Duration patience{};       // how long to wait for an action under way on a phone
};

struct MatchOutcome {
    Pairings made;      // by this run
    bool busy = false;  // a phone was not probed, since an action is under way on it
};

// Finds out which Bluetooth host drives which screen: moves the pointer of one host between two
// points and looks which screen shows the jump. Blocks for about 1.2 s a host.
class Matcher {
 public:
    using InputFor = std::function<std::shared_ptr<Input>(const Uuid& host)>;

    Matcher(InputFor inputFor, PhoneUse& use, Clock& clock);

    MatchOutcome run(MatchSituation situation, const MatchOptions& options, std::stop_token stop);

 private:
    using Screens = std::vector<std::shared_ptr<Screen>>;
    // The screen, by index, that showed the pointer of `host` jump.
    std::optional<std::size_t> probe(const Uuid& host, const Screens& candidates,
                                     const std::stop_token& stop);

    const InputFor inputFor_;
    PhoneUse& use_;
    Clock& clock_;
};

}  // namespace tandrel
