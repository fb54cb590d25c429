#include "platform/linux/bluez_objects.h"

#include <gtest/gtest.h>

#include "platform/linux/bluez_advertisement.h"
#include "platform/linux/bluez_bonds.h"
#include "platform/linux/report_pacer.h"

namespace tandrel::bluez {
namespace {

using namespace std::chrono_literals;

// "A" is a device at hci0 with address "A"; a letter in `resolved` means its services are known.
Objects objectsOf(const std::string& connected, const std::string& resolved) {
    Objects objects;
    for (const char letter : std::string("ABH")) {
        const std::string name(1, letter);
        Device device;
        device.adapter = "hci0";
        device.address = device.name = name;
        device.connected = connected.find(letter) != std::string::npos;
        device.servicesResolved = resolved.find(letter) != std::string::npos;
        device.paired = true;
        objects.devices[name] = device;
    }
    return objects;
}

TEST(BluezObjects, OnePhoneIsInUse) {
    using Text = const char*;
    const std::tuple<Text, Text, Text, Text, Text, PhoneInUse> rows[] = {
        {"nobody", "", "", "hci0", "", {"", {}}},
        {"one that is not ready", "A", "", "hci0", "", {"", {}}},
        {"one", "A", "A", "hci0", "", {"A", {}}},
        {"one at another adapter", "A", "A", "hci1", "", {"", {}}},
        {"one that does not use us", "H", "H", "hci0", "", {"", {}}},
        {"one beside it", "AH", "AH", "hci0", "A", {"A", {}}},
        {"two at once", "AB", "AB", "hci0", "", {"", {"B"}}},
        {"a second before it is ready", "AB", "A", "hci0", "A", {"", {"B"}}},
        {"a second, listed before", "AB", "AB", "hci0", "B", {"", {"A"}}},
    };
    for (const auto& [what, connected, resolved, adapter, current, expected] : rows) {
        EXPECT_EQ(phoneInUse(objectsOf(connected, resolved), adapter, {"A", "B"}, current),
                  expected)
            << what;
    }
}

TEST(BluezObjects, CentralsStayTheSameAndDiffer) {
    EXPECT_EQ(centralOf("AA:00:00:00:00:01").text(), "6689A394-772C-54C5-A577-E46BCB0629F9");
    EXPECT_NE(centralOf("AA:00:00:00:00:01"), centralOf("AA:00:00:00:00:02"));
}

TEST(BluezAdvertisement, NameIsCutAtACharacter) {
    const std::pair<std::string, std::string> rows[] = {
        {"Tandrel", "Tandrel"},
        {std::string(29, 'a'), std::string(29, 'a')},
        {std::string(300, 'a'), std::string(29, 'a')},
        {std::string(28, 'a') + "é", std::string(28, 'a')},
        {std::string(27, 'a') + "é", std::string(27, 'a') + "é"},
        {std::string(20, 'a') + "👨‍👩‍👧", std::string(20, 'a')},
        {"", ""},
    };
    for (const auto& [name, expected] : rows) EXPECT_EQ(advertisedName(name), expected);
}

TEST(BluezBonds, DeviceThatComesAndGoesAtOnceIsToldOnce) {
    BondWatch bonds;
    TimePoint now{};
    std::string told;
    const auto visit = [&](const char* resolved, Duration stay) {
        for (const char* connected : {"A", ""}) {
            for (const Device& device : bonds.newlyStale(objectsOf(connected, resolved), now)) {
                told += device.address;
            }
            now += stay;
        }
    };
    const std::tuple<const char*, Duration, const char*> visits[] = {
        // services, stay, told by then
        {"A", 1s, ""}, {"", 10s, ""}, {"", 1s, ""},  // the first short one
        {"A", 1s, ""}, {"", 1s, ""},                 // counted anew after a good visit
        {"", 1s, "A"}, {"", 1s, "A"},
    };
    for (const auto& [resolved, stay, toldByThen] : visits) {
        visit(resolved, stay);
        EXPECT_EQ(told, toldByThen);
    }
}

TEST(ReportPacer, BoundsTheRateAndWhatIsNotTaken) {
    ReportPacer pacer({.interval = 30ms, .tolerance = 10ms, .mostInFlight = 3});
    TimePoint now{1h};
    const auto expectTaken = [&](Duration passes, bool taken, const char* why) {
        now += passes;
        EXPECT_EQ(pacer.hasRoom(now), taken) << why;
        if (taken) pacer.handOver(now);
    };
    expectTaken({}, true, "the first");
    expectTaken({}, false, "too early");
    EXPECT_EQ(pacer.roomAt(), TimePoint(1h) + 20ms);
    expectTaken(20ms, true, "early by the tolerance");
    expectTaken(20ms, false, "early twice: the rate holds");
    expectTaken(10ms, true, "on time");
    expectTaken(1s, false, "three in flight");
    EXPECT_EQ(pacer.roomAt(), std::nullopt);
    pacer.taken(2);
    expectTaken({}, true, "one in flight");
    expectTaken({}, false, "no credit for the pause");
}

}  // namespace
}  // namespace tandrel::bluez
