#include "platform/virtual/hid_host.h"

#include <gmock/gmock.h>

#include "platform/virtual/virtual_support.h"

namespace tandrel {
namespace {

using test::hex;

constexpr CharacteristicId kKeyboard = 11;
constexpr CharacteristicId kAbsolute = 12;
constexpr CharacteristicId kRelative = 13;
constexpr CharacteristicId kConsumer = 14;

GattReadReply notFound(CharacteristicId) {
    return {.error = AttError::attributeNotFound, .value = {}};
}

TEST(HidHost, SubscribesToInputReportsBatteryAndServiceChanged) {
    EXPECT_THAT(HidHost::discover(test::hidServices(), notFound)->subscriptions(),
                testing::ElementsAre(40, 11, 12, 13, 14, 30));
}

TEST(HidHost, TellsWhatEachReportChanges) {
    HidHost host = *HidHost::discover(test::hidServices(), notFound);
    using Events = std::vector<InputEvent>;
    const std::tuple<const char*, CharacteristicId, const char*, Events> rows[] = {
        {"a place", kAbsolute, "00 00 40 ff 7f", {PointerTo{{16384 / 32767.0, 1.0}}}},
        {"down", kRelative, "01 00 00 00", {ButtonEvent::down}},
        {"held in both reports", kAbsolute, "01 00 00 00 00", {PointerTo{{0, 0}}}},
        {"up in one", kRelative, "00 00 00 00", {ButtonEvent::up}},
        {"up still", kRelative, "00 00 00 00", {}},
        {"motion is signed", kRelative, "00 81 05 00", {PointerBy{-127, 5}}},
        {"a modifier alone", kKeyboard, "02 00 00 00 00 00 00 00", {}},
        {"a key with it", kKeyboard, "02 00 0b 00 00 00 00 00", {KeyEvent{0x0B, 2}}},
        {"the key held", kKeyboard, "02 00 0b 00 00 00 00 00", {}},
        {"all up", kKeyboard, "00 00 00 00 00 00 00 00", {}},
        {"two", kKeyboard, "00 00 0b 0c 00 00 00 00", {KeyEvent{0x0B, 0}, KeyEvent{0x0C, 0}}},
        {"a control", kConsumer, "23 02", {ConsumerEvent{0x223}}},
        {"none", kConsumer, "00 00", {}},
        {"a short report", kKeyboard, "00 00 0d", {}},
        {"the two still", kKeyboard, "00 00 0b 0c 00 00 00 00", {}},
        {"an empty one", kAbsolute, "", {}},
        {"the battery's level", 30, "64", {}},
        {"no characteristic", 99, "01 00 00 00", {}},
    };
    for (const auto& [what, report, bytes, events] : rows) {
        EXPECT_EQ(host.receive(report, hex(bytes)), events) << what;
    }
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
