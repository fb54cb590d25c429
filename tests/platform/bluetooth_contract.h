#pragma once

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "platform/publisher.h"

// What every backend of platform/bluetooth_peripheral.h keeps to. A backend's test instantiates it
// with a World: its radio, one phone in reach of it, and what the two do.
namespace tandrel {

struct BluetoothWorld {
    virtual ~BluetoothWorld() = default;
    virtual MakeBluetoothPeripheral maker() = 0;
    virtual Clock& clock() = 0;  // of the peripheral's queue
    virtual std::vector<GattService> services() = 0;
    virtual Uuid central() = 0;
    virtual std::size_t subscriptions() = 0;  // that the phone makes
    virtual CharacteristicId keyboard() = 0;  // one of those
    virtual void phoneComes() = 0;            // once it can; it subscribes
    virtual void phoneGoes() = 0;
    virtual void refuseOne(Publisher& publisher) = 0;  // brings about one refusal of `send`
    virtual void passTime() = 0;
    // The letters whose keys went down on the phone, at least `count` of them.
    virtual std::string typed(std::size_t count) = 0;
};

inline Bytes keyReport(char letter) {
    const int usage = letter == ' ' ? 0 : letter - 'a' + 4;
    return {0, 0, static_cast<std::uint8_t>(usage), 0, 0, 0, 0, 0};
}

template <typename World>
class BluetoothContract : public testing::Test {
 protected:
    void SetUp() override {
        ASSERT_TRUE(publisher_.await("advertising"));
        world_.phoneComes();
        ASSERT_TRUE(publisher_.awaitSubscriptions(world_.central(), world_.subscriptions()));
        publisher_.takeEvents();
    }
    // A key goes down, or with a space all come up.
    Delivery send(char letter, const std::vector<Uuid>& centrals) {
        return publisher_.send(world_.keyboard(), keyReport(letter), centrals);
    }
    Delivery send(char letter) { return send(letter, {world_.central()}); }

    World world_;
    Publisher publisher_{world_.maker(), world_.services(), world_.clock()};
};

TYPED_TEST_SUITE_P(BluetoothContract);

TYPED_TEST_P(BluetoothContract, ValuesReachTheAddressedPhoneInOrder) {
    for (const char letter : std::string("a b b c")) {
        EXPECT_EQ(this->send(letter), Delivery::accepted);
        EXPECT_EQ(this->send('x', {}), Delivery::accepted);
        EXPECT_EQ(this->send('x', {Uuid()}), Delivery::accepted);
    }
    EXPECT_EQ(this->world_.typed(4), "abbc");
}

TYPED_TEST_P(BluetoothContract, SecondStartOfAdvertisingSaysSo) {
    this->publisher_.with([](auto& to) { to.startAdvertising("Test", {"1812"}); });
    EXPECT_TRUE(this->publisher_.await("already advertising"));
    EXPECT_TRUE(this->publisher_.with([](auto& to) { return to.isAdvertising(); }));
}

TYPED_TEST_P(BluetoothContract, PhoneThatGoesIsUnsubscribedAndMissesWhatIsSent) {
    this->world_.phoneGoes();
    ASSERT_TRUE(this->publisher_.awaitSubscriptions(this->world_.central(), 0));
    EXPECT_EQ(this->send('a'), Delivery::accepted);
    this->world_.phoneComes();
    ASSERT_TRUE(
        this->publisher_.awaitSubscriptions(this->world_.central(), this->world_.subscriptions()));
    EXPECT_EQ(this->send('b'), Delivery::accepted);
    EXPECT_EQ(this->world_.typed(1), "b");
}

TYPED_TEST_P(BluetoothContract, RefusedValueIsNotSentAndRoomIsTold) {
    this->world_.refuseOne(this->publisher_);
    EXPECT_EQ(this->send('a'), Delivery::refused);
    this->world_.passTime();
    EXPECT_TRUE(this->publisher_.await("ready"));
    EXPECT_EQ(this->send('b'), Delivery::accepted);
    EXPECT_EQ(this->world_.typed(1), "b");
}

TYPED_TEST_P(BluetoothContract, RemovedServicesDeliverNothing) {
    this->publisher_.with([](auto& to) { to.removeAllServices(); });
    EXPECT_EQ(this->send('a'), Delivery::accepted);
    EXPECT_EQ(this->world_.typed(0), "");
}

TYPED_TEST_P(BluetoothContract, EndedPeripheralCallsNobody) {
    this->publisher_.with([](auto& to) { to.startAdvertising("Test", {}); });
    this->world_.refuseOne(this->publisher_);
    EXPECT_EQ(this->send('a'), Delivery::refused);
    this->publisher_.end();
    this->publisher_.takeEvents();
    this->world_.passTime();
    this->world_.phoneGoes();
    for (int i = 0; i < 2; ++i) this->publisher_.end();  // what its queue still had is over
    EXPECT_THAT(this->publisher_.takeEvents(), testing::IsEmpty());
}

REGISTER_TYPED_TEST_SUITE_P(BluetoothContract, ValuesReachTheAddressedPhoneInOrder,
                            SecondStartOfAdvertisingSaysSo,
                            PhoneThatGoesIsUnsubscribedAndMissesWhatIsSent,
                            RefusedValueIsNotSentAndRoomIsTold, RemovedServicesDeliverNothing,
                            EndedPeripheralCallsNobody);

}  // namespace tandrel
