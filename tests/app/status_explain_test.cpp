#include "app/status_explain.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(Explain, ActionErrorsAreToldInTheOwnersWords) {
    const std::string paused =
        "Control is paused. Turn it back on from the Tandrel menu in the menu bar.";
    const std::string notConnected =
        "The iPhone isn't connected over Bluetooth. Unlock it and check that Settings › Bluetooth "
        "on the iPhone shows Tandrel as Connected.";
    const std::string notMatched =
        "The iPhone is connected over Bluetooth, but Tandrel can't tell it apart yet. Unlock it, "
        "check AssistiveTouch is on, then test again.";
    const std::string noPicture = "No picture from the iPhone. Wake it and unlock it.";
    const std::string several =
        "More than one iPhone is connected. Unplug or turn off Bluetooth on the ones you don't "
        "want to use.";
    const std::string noAnswer =
        "Tandrel's phone connection isn't answering. Quit Tandrel and open it again.";
    const std::tuple<const char*, int, std::string> rows[] = {
        {"", 423, paused},
        {"Tandrel is PAUSED: the owner turned off control", 400, paused},
        {"paused, no frame", 400, paused},
        {"no iPhone connected over Bluetooth and no screen on USB: pair \"Tandrel\"", 400,
         notConnected},
        {"Ada's iPhone has no Bluetooth connection", 400, notConnected},
        {"no connected Bluetooth host 1234", 400, notConnected},
        {"could not tell which Bluetooth host is this phone: unlock it", 400, notMatched},
        {"no frame yet from Ada's iPhone: unlock it", 503, noPicture},
        {"asleep, Unlock It", 400, noPicture},
        {"2 phones are connected, pass device", 400, several},
        {"3 Bluetooth hosts are connected and no screen is on USB", 400, several},
        {"could not connect", 0, noAnswer},
        {"Connection refused", 0, noAnswer},
        {"the network is offline", 0, noAnswer},
        {"", 500, "Something went wrong (500)."},
        {"", 0, "Something went wrong (0)."},
        {"Not Found", 404, "Not Found"},
        {" ", 500, " "},
    };
    for (const auto& [message, status, text] : rows) {
        EXPECT_EQ(Explain::actionError(message, status), text) << status << " " << message;
    }
}

}  // namespace
}  // namespace tandrel
