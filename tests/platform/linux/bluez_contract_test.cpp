#include "platform/bluetooth_contract.h"
#include "platform/linux/bluez_objects.h"
#include "platform/linux/bluez_peripheral.h"
#include "platform/linux/bluez_services.h"
#include "platform/linux/fake_bluez.h"
#include "platform/linux/private_bus.h"

namespace tandrel {
namespace {

struct BluezWorld final : BluetoothWorld {
    BluezWorld() {
        bluez.addAdapter("hci0");
        bluez.appear();
        phone = bluez.addDevice(kAddress);
    }
    MakeBluetoothPeripheral maker() override {
        BluezOptions options;
        options.pace = {.interval = {}, .tolerance = {}, .mostInFlight = 30};
        return makeBluezPeripheral(options);
    }
    Clock& clock() override { return systemClock(); }
    std::vector<GattService> services() override { return test::services(); }
    Uuid central() override { return bluez::centralOf(kAddress); }
    std::size_t subscriptions() override { return 3; }
    CharacteristicId keyboard() override { return test::kKeyboard; }
    void phoneComes() override { bluez.use(phone); }
    void phoneGoes() override { bluez.disconnect(phone); }
    // The daemon stands still and takes no more.
    void refuseOne(Publisher& publisher) override {
        bluez.stall();
        for (int i = 0; i < 30; ++i) publisher.send(test::kKeyboard, keyReport(' '), {central()});
    }
    void passTime() override { bluez.resume(); }
    std::string typed(std::size_t count) override {
        for (std::size_t reports = count;; ++reports) {
            const auto received = bluez.received(phone, reports);
            std::string typed;
            for (const auto& report : received) typed += letterOf(report);
            if (typed.size() >= count || received.size() < reports) return typed;
        }
    }
    // Of a report, "1/2 00 00 04 ...", the first key counts.
    static std::string letterOf(const std::string& report) {
        const int usage = std::stoi(report.substr(10, 2), nullptr, 16);
        return usage == 0 ? "" : std::string(1, static_cast<char>('a' + usage - 4));
    }

    static constexpr const char* kAddress = "AA:00:00:00:00:01";
    PrivateBus bus;
    FakeBluez bluez;
    std::string phone;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Bluez, BluetoothContract, BluezWorld);

}  // namespace
}  // namespace tandrel
