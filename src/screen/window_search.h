#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/windows.h"

// Which of the windows shows the mirrored phone.
namespace tandrel {

// How likely the window is an AirPlay picture's; 0: not a candidate. Reads TANDREL_AIRPLAY_OWNER
// and TANDREL_AIRPLAY_TITLE, by which the owner points at a window.
int airplayScore(const WinInfo& window);

// From this score on it is the window's owner, or this computer's, that says so. A title alone,
// which any web page can choose, never reaches it.
inline constexpr int kTrustedScore = 60;

inline constexpr const char* kNoMirroringWindow =
    "no AirPlay mirroring window: on the iPhone open Control Center › Screen Mirroring › this Mac "
    "(AirPlay Receiver must be on)";

inline constexpr const char* kNoMirroringApp =
    "iPhone Mirroring window not found (open the iPhone Mirroring app and unlock pairing once)";

// The windows that may show a mirrored phone, the likeliest first, equal ones in the system's
// order.
Result<std::vector<WinInfo>> airplayCandidates(Windows& windows);

Result<std::optional<WinInfo>> windowInfo(Windows& windows, std::uint32_t id);

// The window of that id, else the likeliest candidate; the error says why there is none.
Result<WinInfo> pickWindow(Windows& windows, std::optional<std::uint32_t> id);

// The window of a phone-mirroring program, else of an AirPlay receiver, else one whose owner or
// title contains `text`; of several of a kind the largest. On screen and in the normal layer.
Result<std::optional<WinInfo>> findWindow(Windows& windows, std::string_view text);

}  // namespace tandrel
