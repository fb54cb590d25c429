#include "app/status_explain.h"

#include <QtGlobal>
#include <algorithm>
#include <array>

#include "app/owner_text.h"
#include "base/unicode.h"

namespace tandrel {
namespace {

struct ExplainedRow {
    std::array<std::string_view, 3> parts;  // any of them, in lower case
    const char* text;
};

constexpr int kPausedStatus = 423;
constexpr const char* kPaused = QT_TRANSLATE_NOOP(
    "Explain", "Control is paused. Turn it back on from the Tandrel menu in the menu bar.");

// The first row of which the message contains a part wins.
// clang-format off
constexpr ExplainedRow kExplainedRows[] = {
    {{"paused"},
     kPaused},
    {{"no iphone connected over bluetooth", "has no bluetooth connection", "no connected bluetooth"},
     QT_TRANSLATE_NOOP("Explain", "The iPhone isn't connected over Bluetooth. Unlock it and check that Settings › Bluetooth on the "
     "iPhone shows Tandrel as Connected.")},
    {{"could not tell which bluetooth"},
     QT_TRANSLATE_NOOP("Explain", "The iPhone is connected over Bluetooth, but Tandrel can't tell it apart yet. Unlock it, check "
     "AssistiveTouch is on, then test again.")},
    {{"no frame", "unlock it"},
     QT_TRANSLATE_NOOP("Explain", "No picture from the iPhone. Wake it and unlock it.")},
    {{"phones are connected", "hosts are connected"},
     QT_TRANSLATE_NOOP("Explain", "More than one iPhone is connected. Unplug or turn off Bluetooth on the ones you don't want to "
     "use.")},
    {{"could not connect", "connection refused", "offline"},
     QT_TRANSLATE_NOOP("Explain", "Tandrel's phone connection isn't answering. Quit Tandrel and open it again.")},
};
// clang-format on

}  // namespace

std::string Explain::actionError(std::string_view message, int status) {
    if (status == kPausedStatus) return ownerText("Explain", kPaused);
    const std::string lower = lowerCased(message);
    for (const ExplainedRow& row : kExplainedRows) {
        const bool applies = std::ranges::any_of(row.parts, [&](std::string_view part) {
            return !part.empty() && lower.find(part) != std::string::npos;
        });
        if (applies) return ownerText("Explain", row.text);
    }
    if (message.empty()) {
        return filledIn(ownerText("Explain", "Something went wrong (%1)."),
                        {std::to_string(status)});
    }
    return std::string(message);
}

}  // namespace tandrel
