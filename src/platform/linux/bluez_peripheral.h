#pragma once

#include <memory>
#include <set>
#include <string>

#include "platform/bluetooth_peripheral.h"
#include "platform/linux/report_pacer.h"

namespace tandrel {

struct BluezOptions {
    std::set<std::string> adapters;  // those to be used ("hci0"); empty: all
    ReportPacer::Limits pace;
    Duration retry = std::chrono::seconds(10);     // after the bus or the daemon refused us
    Duration deafness = std::chrono::seconds(15);  // until a silent phone is sent away once

    // "hci0,hci1"
    static std::set<std::string> parseAdapters(std::string_view text);
};

// The peripheral role of bluetoothd, over D-Bus and without any privilege.
//
// One phone per adapter: bluetoothd sends a notification to all who ever subscribed, so a second
// phone is disconnected, and reports leave only while exactly one is there. A phone counts as
// subscribed while it is connected; its subscription alone outlives the connection. Generic
// Attribute belongs to the daemon, which tells phones of changed services by itself: it is reported
// as added and never published, and nobody is ever subscribed to Service Changed.
MakeBluetoothPeripheral makeBluezPeripheral(const BluezOptions& options = {},
                                            Clock& clock = systemClock());

}  // namespace tandrel
