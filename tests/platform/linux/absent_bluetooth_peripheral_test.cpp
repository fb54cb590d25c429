#include "platform/linux/absent_bluetooth_peripheral.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tandrel {
namespace {

using testing::ElementsAre;

class Recorder final : public BluetoothPeripheralDelegate {
 public:
    void stateChanged(BluetoothState state) override { seen.emplace_back(name(state)); }
    void serviceAdded(const std::string& uuid, const std::optional<std::string>& error) override {
        seen.push_back(uuid + ": " + error.value_or("added"));
    }
    void advertisingStarted(const std::optional<AdvertisingError>& error) override {
        seen.push_back("advertising: " + (error ? error->description : "started"));
    }
    void subscribed(const Uuid&, CharacteristicId) override { seen.emplace_back("subscribed"); }
    void unsubscribed(const Uuid&, CharacteristicId) override { seen.emplace_back("unsubscribed"); }
    GattReadReply read(const GattRead&) override { return {}; }
    AttError write(const std::vector<GattWrite>&) override { return AttError::none; }
    void readyToUpdateSubscribers() override { seen.emplace_back("ready"); }

    std::vector<std::string> seen;
};

class AbsentBluetoothTest : public testing::Test {
 protected:
    Recorder recorder_;
    SerialQueue queue_{"bluetooth"};
};

TEST_F(AbsentBluetoothTest, SaysLaterThatThereIsNothingAndRefusesTheRest) {
    auto peripheral = queue_.sync([&] {
        auto made = AbsentBluetoothPeripheral::maker()(recorder_, queue_);
        EXPECT_TRUE(recorder_.seen.empty()) << "the caller does not have it in hand yet";
        return made;
    });
    queue_.sync([&] {
        peripheral->addService({.uuid = "1812", .characteristics = {}});
        peripheral->startAdvertising("Tandrel", {"1812"});
        EXPECT_FALSE(peripheral->isAdvertising());
    });
    queue_.sync([&] {
        EXPECT_THAT(recorder_.seen,
                    ElementsAre("unsupported", "1812: this build has no Bluetooth backend yet",
                                "advertising: this build has no Bluetooth backend yet"));
        peripheral.reset();
    });
}

TEST_F(AbsentBluetoothTest, ReportsNothingOnceItIsGone) {
    queue_.sync([&] { AbsentBluetoothPeripheral::maker()(recorder_, queue_).reset(); });
    queue_.sync([&] { EXPECT_TRUE(recorder_.seen.empty()); });
}

}  // namespace
}  // namespace tandrel
