#include "platform/virtual/virtual_bluetooth_peripheral.h"

#include <gmock/gmock.h>

#include "platform/publisher.h"
#include "platform/virtual/virtual_support.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

constexpr CharacteristicId kServiceChanged = 40;

Scenario scenarioOf(const char* host, bool staleCache = false) {
    Scenario scenario = test::scenario(R"([{"name": "home", "items": []}])");
    scenario.phone.id = host;
    scenario.phone.host = *Uuid::parse(host);
    scenario.phone.staleCache = staleCache;
    return scenario;
}

// Two phones in reach, and what differs from one: the rest is the contract's.
class VirtualBluetoothTest : public testing::Test {
 protected:
    void SetUp() override {
        ASSERT_TRUE(publisher_->awaitSubscriptions(hostOf(a_), 6));
        ASSERT_TRUE(publisher_->awaitSubscriptions(hostOf(b_), 6));
        publisher_->takeEvents();
    }
    static Uuid hostOf(const VirtualPhone& phone) { return phone.traits().host; }
    // A key goes down, or with 0 all come up.
    Delivery send(std::uint8_t usage, const std::vector<Uuid>& centrals) {
        return publisher_->send(11, {0, 0, usage, 0, 0, 0, 0, 0}, centrals);
    }

    ManualClock clock_;
    VirtualPhone a_{scenarioOf("00000000-0000-0000-0000-00000000000A"), clock_};
    VirtualPhone b_{scenarioOf("00000000-0000-0000-0000-00000000000B"), clock_};
    MakeBluetoothPeripheral make_ = makeVirtualBluetoothPeripheral({&a_, &b_});
    std::unique_ptr<Publisher> publisher_ =
        std::make_unique<Publisher>(make_, test::hidServices(), clock_);
};

TEST_F(VirtualBluetoothTest, UpdateReachesAndIsRefusedByTheAddressedPhoneAlone) {
    a_.refuseNextUpdates(2);
    EXPECT_EQ(send(0x04, {hostOf(b_)}), Delivery::accepted);
    EXPECT_EQ(send(0, {hostOf(b_)}), Delivery::accepted);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(send(0x05, {hostOf(a_), hostOf(b_)}), Delivery::refused);
    }
    EXPECT_EQ(a_.record().typed + b_.record().typed, "a");
    EXPECT_THAT(publisher_->takeEvents(), testing::IsEmpty()) << "there is no room yet";
    clock_.advance(std::chrono::milliseconds(15));
    EXPECT_TRUE(publisher_->await("ready"));
    EXPECT_EQ(send(0x05, {hostOf(a_), hostOf(b_)}), Delivery::accepted);
    EXPECT_EQ(b_.record().typed, "ab");
    EXPECT_EQ(a_.record().typed, "b");
}

TEST_F(VirtualBluetoothTest, PhoneThatLeavesComesBackOnlyWhileAdvertised) {
    a_.disconnectBluetooth();
    ASSERT_TRUE(publisher_->awaitSubscriptions(hostOf(a_), 0));
    publisher_->with([](auto& to) { to.stopAdvertising(); });
    a_.connectBluetooth();
    b_.disconnectBluetooth();
    EXPECT_TRUE(publisher_->awaitSubscriptions(hostOf(b_), 0));
    EXPECT_TRUE(publisher_->awaitSubscriptions(hostOf(a_), 0)) << "it came before the other left";
    publisher_->with([](auto& to) { to.startAdvertising("Test", {"1812"}); });
    EXPECT_TRUE(publisher_->awaitSubscriptions(hostOf(a_), 6));
}

TEST_F(VirtualBluetoothTest, StalePhoneSubscribesOnceToldThatServicesChanged) {
    VirtualPhone stale(scenarioOf("00000000-0000-0000-0000-00000000000C", true), clock_);
    Publisher publisher(makeVirtualBluetoothPeripheral({&stale}), test::hidServices(), clock_);
    EXPECT_TRUE(publisher.await("write 20 of 1"));
    EXPECT_TRUE(publisher.awaitSubscriptions(hostOf(stale), 1));
    publisher.send(kServiceChanged, {0x10, 0, 0xff, 0xff}, {hostOf(stale)});
    EXPECT_TRUE(publisher.awaitSubscriptions(hostOf(stale), 7))
        << "Service Changed twice, as it asks anew";
}

TEST_F(VirtualBluetoothTest, SecondPeripheralAfterTheFirstIsServedTheSame) {
    publisher_.reset();
    publisher_ = std::make_unique<Publisher>(make_, test::hidServices(), clock_);
    EXPECT_TRUE(publisher_->awaitSubscriptions(hostOf(a_), 6));
    EXPECT_EQ(send(0x04, {hostOf(a_)}), Delivery::accepted);
    EXPECT_EQ(a_.record().typed, "a");
}

}  // namespace
}  // namespace tandrel
