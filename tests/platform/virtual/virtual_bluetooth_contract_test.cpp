#include "platform/bluetooth_contract.h"
#include "platform/virtual/virtual_bluetooth_peripheral.h"
#include "platform/virtual/virtual_support.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

struct VirtualWorld final : BluetoothWorld {
    MakeBluetoothPeripheral maker() override { return makeVirtualBluetoothPeripheral({&phone}); }
    Clock& clock() override { return manual; }
    std::vector<GattService> services() override { return test::hidServices(); }
    Uuid central() override { return phone.traits().host; }
    std::size_t subscriptions() override { return 6; }
    CharacteristicId keyboard() override { return 11; }
    void phoneComes() override { phone.connectBluetooth(); }
    void phoneGoes() override { phone.disconnectBluetooth(); }
    void refuseOne(Publisher&) override { phone.refuseNextUpdates(1); }
    void passTime() override { manual.advance(std::chrono::seconds(1)); }
    std::string typed(std::size_t) override { return phone.record().typed; }

    ManualClock manual;
    VirtualPhone phone{test::scenario(R"([{"name": "home", "items": []}])"), manual};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Virtual, BluetoothContract, VirtualWorld);

}  // namespace
}  // namespace tandrel
