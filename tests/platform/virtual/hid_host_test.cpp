#include "platform/virtual/hid_host.h"

#include <gmock/gmock.h>

#include "platform/virtual/virtual_support.h"

namespace tandrel {
namespace {

using test::hex;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr CharacteristicId kKeyboard = 11;
constexpr CharacteristicId kAbsolute = 12;
constexpr CharacteristicId kRelative = 13;
constexpr CharacteristicId kConsumer = 14;

GattReadReply notFound(CharacteristicId) {
    return {.error = AttError::attributeNotFound, .value = {}};
}

class HidHostTest : public testing::Test {
 protected:
    std::vector<InputEvent> send(CharacteristicId report, std::string_view bytes) {
        return host_.receive(report, hex(bytes));
    }

    HidHost host_ = *HidHost::discover(test::hidServices(), notFound);
};

TEST_F(HidHostTest, SubscribesToInputReportsBatteryAndServiceChanged) {
    EXPECT_THAT(host_.subscriptions(), ElementsAre(40, 11, 12, 13, 14, 30));
}

TEST_F(HidHostTest, TapIsPlaceThenButton) {
    EXPECT_THAT(send(kAbsolute, "00 00 40 ff 7f"),
                ElementsAre(InputEvent(PointerTo{{16384 / 32767.0, 1.0}})));
    EXPECT_THAT(send(kRelative, "01 00 00 00"), ElementsAre(InputEvent(ButtonEvent::down)));
    EXPECT_THAT(send(kRelative, "00 00 00 00"), ElementsAre(InputEvent(ButtonEvent::up)));
    EXPECT_THAT(send(kRelative, "00 00 00 00"), IsEmpty());
}

TEST_F(HidHostTest, ButtonHeldInBothReportsStaysDownUntilOneSaysUp) {
    send(kRelative, "01 00 00 00");
    EXPECT_THAT(send(kAbsolute, "01 00 00 00 00"), ElementsAre(InputEvent(PointerTo{{0, 0}})));
    EXPECT_THAT(send(kRelative, "00 00 00 00"), ElementsAre(InputEvent(ButtonEvent::up)));
}

TEST_F(HidHostTest, MotionIsSignedCounts) {
    EXPECT_THAT(send(kRelative, "00 81 05 00"), ElementsAre(InputEvent(PointerBy{-127, 5})));
}

TEST_F(HidHostTest, KeyGoesDownOnceWithItsModifiers) {
    EXPECT_THAT(send(kKeyboard, "02 00 00 00 00 00 00 00"), IsEmpty());
    EXPECT_THAT(send(kKeyboard, "02 00 0b 00 00 00 00 00"),
                ElementsAre(InputEvent(KeyEvent{0x0B, 2})));
    EXPECT_THAT(send(kKeyboard, "02 00 0b 00 00 00 00 00"), IsEmpty());
    EXPECT_THAT(send(kKeyboard, "00 00 00 00 00 00 00 00"), IsEmpty());
    EXPECT_THAT(send(kKeyboard, "00 00 0b 0c 00 00 00 00"),
                ElementsAre(InputEvent(KeyEvent{0x0B, 0}), InputEvent(KeyEvent{0x0C, 0})));
}

TEST_F(HidHostTest, ControlIsItsUsage) {
    EXPECT_THAT(send(kConsumer, "23 02"), ElementsAre(InputEvent(ConsumerEvent{0x223})));
    EXPECT_THAT(send(kConsumer, "00 00"), IsEmpty());
}

TEST_F(HidHostTest, ShortReportsAndOtherCharacteristicsTellNothing) {
    EXPECT_THAT(send(kKeyboard, "00 00 0b"), IsEmpty());
    EXPECT_THAT(host_.receive(kAbsolute, Bytes{}), IsEmpty());
    EXPECT_THAT(send(30, "64"), IsEmpty());
    EXPECT_THAT(send(99, "01 00 00 00"), IsEmpty());
}

TEST(HidHost, ReadsTheReportMapWhereItHasNoStaticValue) {
    auto services = test::hidServices();
    services[1].characteristics[0].value.reset();
    EXPECT_FALSE(HidHost::discover(services, notFound));
    const auto host = HidHost::discover(services, [](CharacteristicId id) {
        EXPECT_EQ(id, 1);
        return GattReadReply{.error = AttError::none, .value = test::keyboardAndPointers()};
    });
    EXPECT_TRUE(host);
}

TEST(HidHost, RefusesAPeripheralWithoutReports) {
    EXPECT_FALSE(HidHost::discover({}, notFound));
    auto services = test::hidServices();
    for (auto& characteristic : services[1].characteristics) characteristic.descriptors.clear();
    EXPECT_FALSE(HidHost::discover(services, notFound));
    services = test::hidServices();
    services[1].characteristics[0].value = hex("85 09 75 08 95 01 81 02");
    EXPECT_FALSE(HidHost::discover(services, notFound))
        << "no report of the map has a characteristic";
}

}  // namespace
}  // namespace tandrel
