#include "platform/virtual/virtual_bluetooth_peripheral.h"

#include <gmock/gmock.h>

#include "platform/virtual/virtual_support.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

using namespace std::chrono_literals;
using test::hex;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr CharacteristicId kKeyboardReport = 11;

// Publishes the services as soon as the radio is on, advertises, and writes down what it is told.
class Publisher final : public BluetoothPeripheralDelegate {
 public:
    Publisher(const MakeBluetoothPeripheral& make, Clock& clock) : queue("publisher", clock) {
        queue.sync([&] { peripheral = make(*this, queue); });
    }
    ~Publisher() override {
        queue.sync([this] { peripheral.reset(); });
    }

    void stateChanged(BluetoothState state) override {
        EXPECT_TRUE(queue.isCurrent());
        events.push_back(std::string(name(state)));
        if (state == BluetoothState::poweredOn) peripheral->addService(services.front());
    }
    void serviceAdded(const std::string& uuid, const std::optional<std::string>& error) override {
        events.push_back("added " + uuid.substr(4, 4) + error.value_or(""));
        if (++added < services.size()) return peripheral->addService(services[added]);
        if (advertises) peripheral->startAdvertising("Test", {"1812"});
    }
    void advertisingStarted(const std::optional<AdvertisingError>& error) override {
        events.push_back(!error                      ? "advertising"
                         : error->alreadyAdvertising ? "already advertising"
                                                     : "failed");
    }
    void subscribed(const Uuid& central, CharacteristicId characteristic) override {
        subscriptions.emplace_back(central, characteristic);
    }
    void unsubscribed(const Uuid& central, CharacteristicId characteristic) override {
        std::erase(subscriptions, std::pair(central, characteristic));
    }
    GattReadReply read(const GattRead&) override {
        return {.error = AttError::attributeNotFound, .value = {}};
    }
    AttError write(const std::vector<GattWrite>& requests) override {
        for (const GattWrite& request : requests) {
            events.push_back("write " + std::to_string(request.characteristic));
        }
        return AttError::none;
    }
    void readyToUpdateSubscribers() override { events.push_back("ready"); }

    std::vector<std::string> takeEvents() {
        return queue.sync([this] { return std::exchange(events, {}); });
    }
    std::size_t subscriptionsOf(const VirtualPhone& phone) {
        return queue.sync([&] {
            return static_cast<std::size_t>(std::ranges::count(
                subscriptions, phone.traits().host, &std::pair<Uuid, CharacteristicId>::first));
        });
    }
    Delivery send(CharacteristicId characteristic, std::string_view bytes,
                  const std::vector<Uuid>& centrals) {
        return queue.sync(
            [&] { return peripheral->updateValue(characteristic, hex(bytes), centrals); });
    }

    std::vector<GattService> services = test::hidServices();
    std::size_t added = 0;
    bool advertises = true;
    std::vector<std::string> events;
    std::vector<std::pair<Uuid, CharacteristicId>> subscriptions;
    SerialQueue queue;
    std::unique_ptr<BluetoothPeripheral> peripheral;
};

class VirtualBluetoothTest : public testing::Test {
 protected:
    static Scenario scenarioOf(const char* id, const char* host) {
        Scenario scenario = test::scenario(R"([{"name": "home", "items": []}])");
        scenario.phone.id = id;
        scenario.phone.host = *Uuid::parse(host);
        return scenario;
    }
    // Waits until the publisher's queue has run dry of what follows from what was posted.
    void settle() {
        for (int hop = 0; hop < 20; ++hop) publisher_.queue.sync([] {});
    }
    void SetUp() override { settle(); }

    ManualClock clock_;
    VirtualPhone a_{scenarioOf("A", "00000000-0000-0000-0000-00000000000A"), clock_};
    VirtualPhone b_{scenarioOf("B", "00000000-0000-0000-0000-00000000000B"), clock_};
    MakeBluetoothPeripheral make_ = makeVirtualBluetoothPeripheral({&a_, &b_});
    Publisher publisher_{make_, clock_};
};

TEST_F(VirtualBluetoothTest, TurnsOnAddsServicesAdvertisesAndIsSubscribed) {
    EXPECT_THAT(publisher_.takeEvents(),
                ElementsAre("powered on", "added 1801", "added 1812", "added 180F", "advertising"));
    EXPECT_EQ(publisher_.subscriptionsOf(a_), 6u);
    EXPECT_EQ(publisher_.subscriptionsOf(b_), 6u);
}

TEST_F(VirtualBluetoothTest, SecondStartOfAdvertisingSaysSo) {
    publisher_.takeEvents();
    publisher_.queue.sync([&] { publisher_.peripheral->startAdvertising("Test", {"1812"}); });
    settle();
    EXPECT_THAT(publisher_.takeEvents(), ElementsAre("already advertising"));
}

TEST_F(VirtualBluetoothTest, UpdateReachesTheAddressedPhoneAlone) {
    EXPECT_EQ(publisher_.send(kKeyboardReport, "00 00 04 00 00 00 00 00", {b_.traits().host}),
              Delivery::accepted);
    EXPECT_EQ(b_.record().typed, "a");
    EXPECT_EQ(a_.record().typed, "");
    publisher_.send(kKeyboardReport, "00 00 00 00 00 00 00 00", {b_.traits().host});
    publisher_.send(kKeyboardReport, "00 00 05 00 00 00 00 00",
                    {a_.traits().host, b_.traits().host});
    EXPECT_EQ(b_.record().typed, "ab");
    EXPECT_EQ(a_.record().typed, "b");
    publisher_.send(kKeyboardReport, "00 00 06 00 00 00 00 00", {Uuid()});
    EXPECT_EQ(a_.record().typed + b_.record().typed, "bab");
}

TEST_F(VirtualBluetoothTest, RefusedUpdateIsNotDeliveredAndReadinessFollowsLater) {
    publisher_.takeEvents();
    a_.refuseNextUpdates(1);
    EXPECT_EQ(publisher_.send(kKeyboardReport, "00 00 04 00 00 00 00 00", {b_.traits().host}),
              Delivery::accepted)
        << "the other phone";
    EXPECT_EQ(publisher_.send(kKeyboardReport, "00 00 04 00 00 00 00 00", {a_.traits().host}),
              Delivery::refused);
    EXPECT_THAT(publisher_.takeEvents(), IsEmpty());
    clock_.advance(15ms);
    settle();
    EXPECT_THAT(publisher_.takeEvents(), ElementsAre("ready"));
    EXPECT_EQ(a_.record().typed, "");
    EXPECT_EQ(publisher_.send(kKeyboardReport, "00 00 04 00 00 00 00 00", {a_.traits().host}),
              Delivery::accepted);
    EXPECT_EQ(a_.record().typed, "a");
}

TEST_F(VirtualBluetoothTest, PhoneThatLeavesUnsubscribesAndComesBack) {
    a_.disconnectBluetooth();
    settle();
    EXPECT_EQ(publisher_.subscriptionsOf(a_), 0u);
    EXPECT_EQ(publisher_.subscriptionsOf(b_), 6u);
    publisher_.send(kKeyboardReport, "00 00 04 00 00 00 00 00", {a_.traits().host});
    EXPECT_EQ(a_.record().typed, "");
    a_.connectBluetooth();
    settle();
    EXPECT_EQ(publisher_.subscriptionsOf(a_), 6u);
}

TEST_F(VirtualBluetoothTest, NobodyComesBackWithoutAdvertising) {
    a_.disconnectBluetooth();
    settle();
    publisher_.queue.sync([&] { publisher_.peripheral->stopAdvertising(); });
    a_.connectBluetooth();
    settle();
    EXPECT_EQ(publisher_.subscriptionsOf(a_), 0u);
    publisher_.queue.sync([&] { publisher_.peripheral->startAdvertising("Test", {"1812"}); });
    settle();
    EXPECT_EQ(publisher_.subscriptionsOf(a_), 6u);
}

TEST_F(VirtualBluetoothTest, StalePhoneSubscribesOnceToldThatServicesChanged) {
    auto scenario = scenarioOf("C", "00000000-0000-0000-0000-00000000000C");
    scenario.phone.staleCache = true;
    VirtualPhone stale(scenario, clock_);
    Publisher publisher(makeVirtualBluetoothPeripheral({&stale}), clock_);
    for (int hop = 0; hop < 20; ++hop) publisher.queue.sync([] {});
    EXPECT_EQ(publisher.takeEvents().back(), "write 20");
    EXPECT_EQ(publisher.subscriptionsOf(stale), 1u);
    publisher.send(40, "10 00 ff ff", {scenario.phone.host});
    for (int hop = 0; hop < 20; ++hop) publisher.queue.sync([] {});
    EXPECT_EQ(publisher.subscriptionsOf(stale), 7u) << "Service Changed twice, as it asks anew";
    publisher.send(kKeyboardReport, "00 00 04 00 00 00 00 00", {scenario.phone.host});
    EXPECT_EQ(stale.record().typed, "a");
}

TEST_F(VirtualBluetoothTest, RemovedServicesDeliverNothing) {
    publisher_.queue.sync([&] { publisher_.peripheral->removeAllServices(); });
    publisher_.send(kKeyboardReport, "00 00 04 00 00 00 00 00", {a_.traits().host});
    EXPECT_EQ(a_.record().typed, "");
}

TEST_F(VirtualBluetoothTest, SecondPeripheralAfterTheFirstIsServedTheSame) {
    publisher_.queue.sync([&] { publisher_.peripheral.reset(); });
    Publisher second(make_, clock_);
    for (int hop = 0; hop < 20; ++hop) second.queue.sync([] {});
    EXPECT_EQ(second.subscriptionsOf(a_), 6u);
    second.send(kKeyboardReport, "00 00 04 00 00 00 00 00", {a_.traits().host});
    EXPECT_EQ(a_.record().typed, "a");
}

TEST_F(VirtualBluetoothTest, EndedPeripheralCallsNobody) {
    publisher_.takeEvents();
    a_.refuseNextUpdates(1);
    publisher_.send(kKeyboardReport, "00 00 04 00 00 00 00 00", {a_.traits().host});
    publisher_.queue.sync([&] {
        publisher_.peripheral->startAdvertising("Test", {});
        publisher_.peripheral.reset();
    });
    b_.disconnectBluetooth();
    clock_.advance(1s);
    settle();
    EXPECT_THAT(publisher_.takeEvents(), IsEmpty());
    EXPECT_EQ(publisher_.subscriptionsOf(b_), 6u);
}

}  // namespace
}  // namespace tandrel
