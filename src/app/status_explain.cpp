#include "app/status_explain.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "base/unicode.h"

namespace tandrel {
namespace {

struct Row {
    std::array<std::string_view, 3> parts;  // any of them, in lower case
    std::string_view text;
};

constexpr int kPausedStatus = 423;
constexpr std::string_view kPaused =
    "Control is paused. Turn it back on from the Tandrel menu in the menu bar.";

// The first row of which the message contains a part wins.
// clang-format off
constexpr Row kRows[] = {
    {{"paused"},
     kPaused},
    {{"no iphone connected over bluetooth", "has no bluetooth connection", "no connected bluetooth"},
     "The iPhone isn't connected over Bluetooth. Unlock it and check that Settings › Bluetooth on the "
     "iPhone shows Tandrel as Connected."},
    {{"could not tell which bluetooth"},
     "The iPhone is connected over Bluetooth, but Tandrel can't tell it apart yet. Unlock it, check "
     "AssistiveTouch is on, then test again."},
    {{"no frame", "unlock it"},
     "No picture from the iPhone. Wake it and unlock it."},
    {{"phones are connected", "hosts are connected"},
     "More than one iPhone is connected. Unplug or turn off Bluetooth on the ones you don't want to "
     "use."},
    {{"could not connect", "connection refused", "offline"},
     "Tandrel's phone connection isn't answering. Quit Tandrel and open it again."},
};
// clang-format on

}  // namespace

std::string Explain::actionError(std::string_view message, int status) {
    if (status == kPausedStatus) return std::string(kPaused);
    const std::string lower = lowerCased(message);
    for (const Row& row : kRows) {
        const bool applies = std::ranges::any_of(row.parts, [&](std::string_view part) {
            return !part.empty() && lower.find(part) != std::string::npos;
        });
        if (applies) return std::string(row.text);
    }
    if (message.empty()) return fmt::format("Something went wrong ({}).", status);
    return std::string(message);
}

}  // namespace tandrel
