#pragma once

#include <memory>
#include <vector>

#include "platform/bluetooth_peripheral.h"
#include "platform/virtual/virtual_phone.h"

namespace tandrel {

// A radio that is always on and reaches these phones, which outlive every peripheral made. A phone
// in range that is paired connects while the peripheral advertises, reads its report map,
// subscribes to its input reports, and takes the reports addressed to it.
MakeBluetoothPeripheral makeVirtualBluetoothPeripheral(std::vector<VirtualPhone*> phones);

}  // namespace tandrel
