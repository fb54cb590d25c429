#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "base/uuid.h"
#include "hid/report_map.h"
#include "platform/bluetooth_peripheral.h"

namespace tandrel {

// CONTRACT SKETCH: the hid room fills this in.
class HIDPeripheral final : private BluetoothPeripheralDelegate {
 public:
    HIDPeripheral(std::string localName, MakeBluetoothPeripheral make, Clock& clock);
    ~HIDPeripheral();

    static HIDPeripheral& shared();
    static void setShared(HIDPeripheral* instance);

    const std::string& localName() const;
    void start();                                // returns at once
    void restart();                              // returns at once
    void stop();                                 // releases everything held, ends the backend; blocks
    std::vector<Uuid> connectedHosts();          // waits for the queue
    void send(ReportID report, std::span<const std::uint8_t> bytes, const Uuid& host);  // returns at once
    std::string state();                         // waits for the queue
    void setOnHostsChanged(std::function<void()> changed);
};

}  // namespace tandrel
