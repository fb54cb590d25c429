#include "hid/hid_peripheral.h"

#include <filesystem>
#include <thread>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include "base/file.h"
#include "base/log.h"
#include "hid/hid_fixture.h"

namespace tandrel {
namespace {

using testing::IsEmpty;
using Lines = std::vector<std::string>;

const std::string kIdA = "AAAAAAAA-AAAA-AAAA-AAAA-AAAAAAAAAAAA";
const std::string kIdB = "BBBBBBBB-BBBB-BBBB-BBBB-BBBBBBBBBBBB";
const Bytes kKeyDown = {0, 0, 4, 0, 0, 0, 0, 0};
const Bytes kKeyUp = {0, 0, 0, 0, 0, 0, 0, 0};

// Bluetooth is on and the device advertises; no phone is there yet.
class HIDPeripheralTest : private ClockFirst<ManualClock>, public HidFixture {
 protected:
    HIDPeripheralTest() : HidFixture(clock) {}

    void SetUp() override {
        AppLog::setShared(appLog_);
        begin();
        logged();
    }

    void TearDown() override {
        AppLog::setShared(nullptr);
        std::filesystem::remove(logFile_);
    }

    // What was logged since the last call, without time stamps.
    Lines logged() {
        hid.state();
        appLog_->flush();
        const std::string text = readFile(logFile_, 1'000'000).value_or("");
        constexpr std::size_t kStamp = std::string_view("[2026-01-01T00:00:00] ").size();
        Lines lines;
        for (std::size_t end = text.find('\n', logRead_); end != std::string::npos;
             end = text.find('\n', logRead_)) {
            lines.push_back(text.substr(logRead_ + kStamp, end - logRead_ - kStamp));
            logRead_ = end + 1;
        }
        return lines;
    }

    void restart() {
        hid.restart();
        hid.state();
    }

    using ClockFirst<ManualClock>::clock;

 private:
    const std::filesystem::path logFile_ =
        std::filesystem::temp_directory_path() / fmt::format("hid_test_{}.log", ::getpid());
    const std::shared_ptr<AppLog> appLog_ = std::make_shared<AppLog>(logFile_);
    std::size_t logRead_ = 0;
};

TEST_F(HIDPeripheralTest, PublishesThisDatabase) {
    Lines rows;
    for (const GattService& service : bluetooth.services()) {
        rows.push_back(service.uuid);
        for (const GattCharacteristic& one : service.characteristics) {
            const GattProperties& can = one.properties;
            const GattPermissions& may = one.permissions;
            const auto flag = [](bool set, const char* name) { return set ? name : ""; };
            std::string row =
                fmt::format("{}{}{}{}{}{} |{}{}{}{} |", one.uuid, flag(can.read, " read"),
                            flag(can.write, " write"), flag(can.writeWithoutResponse, " command"),
                            flag(can.notify, " notify"), flag(can.indicate, " indicate"),
                            flag(may.readable, " readable"), flag(may.writeable, " writeable"),
                            flag(may.readNeedsEncryption, " read-encrypted"),
                            flag(may.writeNeedsEncryption, " write-encrypted"));
            const Bytes value = one.value.value_or(Bytes());
            const bool isLong = value.size() > 20;
            if (isLong) row += fmt::format(" {}", value.size());
            if (!isLong && one.value) row += fmt::format(" {:02x}", fmt::join(value, " "));
            for (const GattDescriptor& descriptor : one.descriptors) {
                row += fmt::format(" {}={:02x}", descriptor.uuid, fmt::join(descriptor.value, " "));
            }
            rows.push_back(row);
        }
    }
    EXPECT_EQ(rows, (Lines{
                        "00001801-0000-1000-8000-00805F9B34FB",
                        "2A05 indicate | readable |",
                        "00001812-0000-1000-8000-00805F9B34FB",
                        "2A4A read | readable | 11 01 00 02",
                        "2A4B read | read-encrypted | 198",
                        "2A4C command | write-encrypted |",
                        "2A4E read command | readable writeable |",
                        "2A4D read notify | read-encrypted | 2908=01 01",
                        "2A4D read notify | read-encrypted | 2908=02 01",
                        "2A4D read notify | read-encrypted | 2908=03 01",
                        "2A4D read notify | read-encrypted | 2908=04 01",
                        "2A4D read write command | read-encrypted write-encrypted | 2908=01 02",
                        "0000180A-0000-1000-8000-00805F9B34FB",
                        "2A29 read | readable | 50 6f 63 6b 65 74 4c 69 6e 6b",
                        "2A50 read | readable | 02 ff ff 00 01 00 01",
                        "0000180F-0000-1000-8000-00805F9B34FB",
                        "2A19 read notify | readable |",
                    }));
    EXPECT_EQ(bluetooth.advertising(), "PocketLink: 1812");
    hid.start();
    EXPECT_EQ(hid.state(), "advertising as PocketLink");
    EXPECT_EQ(bluetooth.peripheralsMade(), 1) << "a second start changes nothing";
}

TEST_F(HIDPeripheralTest, SaysWhatBluetoothIsDoing) {
    const std::tuple<BluetoothState, const char*, const char*> rows[] = {
        {BluetoothState::unauthorized, "unauthorized",
         "bluetooth not allowed (System Settings > Privacy & Security > Bluetooth)"},
        {BluetoothState::poweredOff, "powered off", "bluetooth off"},
        {BluetoothState::unknown, "unknown", "bluetooth unavailable (unknown)"},
        {BluetoothState::resetting, "resetting", "bluetooth unavailable (resetting)"},
        {BluetoothState::unsupported, "unsupported", "bluetooth unavailable (unsupported)"},
    };
    for (const auto& [state, name, text] : rows) {
        bluetooth.changeState(state);
        EXPECT_EQ(hid.state(), text);
        EXPECT_EQ(logged(), Lines{fmt::format("bluetooth state {} auth allowed always", name)});
    }
    restart();
    EXPECT_EQ(hid.state(), "starting");
    bluetooth.powerOn();
    EXPECT_EQ(logged(), (Lines{"bluetooth state powered on auth allowed always",
                               "added service 00001801-0000-1000-8000-00805F9B34FB",
                               "added service 00001812-0000-1000-8000-00805F9B34FB",
                               "added service 0000180A-0000-1000-8000-00805F9B34FB",
                               "added service 0000180F-0000-1000-8000-00805F9B34FB",
                               "advertising as PocketLink"}));
}

TEST_F(HIDPeripheralTest, StopsAtAServiceThatCannotBeAdded) {
    bluetooth.addError = "no room";
    restart();
    logged();
    bluetooth.powerOn();
    const std::string text = "failed to add 00001801-0000-1000-8000-00805F9B34FB: no room";
    EXPECT_EQ(hid.state(), text);
    EXPECT_EQ(logged(), (Lines{"bluetooth state powered on auth allowed always", text}));
    EXPECT_EQ(bluetooth.advertising(), "");

    bluetooth.addError = std::nullopt;
    bluetooth.powerOn();
    EXPECT_EQ(hid.state(), "advertising as PocketLink");
}

TEST_F(HIDPeripheralTest, TellsHowAdvertisingWent) {
    for (const bool already : {false, true}) {
        bluetooth.advertisingError = {.alreadyAdvertising = already, .description = "busy"};
        restart();
        bluetooth.powerOn();
        EXPECT_EQ(hid.state(), already ? "advertising as PocketLink" : "advertising failed: busy");
        EXPECT_EQ(logged().back(), hid.state());
    }
}

TEST_F(HIDPeripheralTest, WithoutBluetoothSaysSo) {
    bluetooth.absent = true;
    restart();
    EXPECT_EQ(hid.state(), "bluetooth unavailable (unsupported)");
    send(ReportID::keyboard, kKeyDown, "A");
    hid.stop();
}

TEST_F(HIDPeripheralTest, APhoneStartsFromEverythingUp) {
    bluetooth.subscribe("A", "1");
    send(ReportID::keyboard, kKeyDown, "A");
    for (const char* report : {"2", "3", "4"}) bluetooth.subscribe("A", report);
    EXPECT_EQ(sent(), (Lines{"A 1: 00 00 00 00 00 00 00 00", "A 1: 00 00 04 00 00 00 00 00",
                             "A 2: 00 00 00 00 00", "A 3: 00 00 00 00", "A 4: 00 00"}));
}

TEST_F(HIDPeripheralTest, AHostIsAPhoneWithAnInputReport) {
    int changes = 0;
    hid.setOnHostsChanged([&changes] { ++changes; });
    bluetooth.subscribe("A", "2A05");
    bluetooth.subscribe("A", "2A19");
    EXPECT_THAT(hid.connectedHosts(), IsEmpty());
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(hid.state(), "advertising as PocketLink");

    bluetooth.subscribe("A", "4");
    bluetooth.subscribe("B", "1");
    const Uuid a = FakeBluetooth::phone("A");
    const Uuid b = FakeBluetooth::phone("B");
    EXPECT_THAT(hid.connectedHosts(), testing::UnorderedElementsAre(a, b));
    EXPECT_EQ(hid.state(), "2 connected, advertising as PocketLink");
    EXPECT_EQ(changes, 2);
    bluetooth.unsubscribe("A", "4");
    EXPECT_THAT(hid.connectedHosts(), testing::UnorderedElementsAre(b));
    EXPECT_EQ(hid.state(), "1 connected, advertising as PocketLink");
    bluetooth.unsubscribe("B", "1");
    EXPECT_THAT(hid.connectedHosts(), IsEmpty());
    EXPECT_EQ(hid.state(), "advertising as PocketLink");
    EXPECT_EQ(changes, 4);

    hid.setOnHostsChanged({});
    bluetooth.subscribe("B", "2");
    EXPECT_EQ(changes, 4);
    EXPECT_EQ(logged(), (Lines{"subscribe 2A05  from " + kIdA, "subscribe 2A19  from " + kIdA,
                               "subscribe 2A4D (consumer) from " + kIdA,
                               "subscribe 2A4D (keyboard) from " + kIdB,
                               "unsubscribe 2A4D (consumer) from " + kIdA,
                               "unsubscribe 2A4D (keyboard) from " + kIdB,
                               "subscribe 2A4D (absolutePointer) from " + kIdB}));
}

TEST_F(HIDPeripheralTest, DropsReportsThatNobodyListensToAndGivesTheOthersTheirLength) {
    send(ReportID::keyboard, kKeyDown, "A");
    bluetooth.subscribe("A", "3");
    bluetooth.subscribe("A", "4");
    bluetooth.clearTranscript();
    send(ReportID::keyboard, kKeyDown, "A");
    send(ReportID::consumer, {1, 2, 3, 4, 5, 6, 7, 8, 9}, "A");
    send(ReportID::relativeMouse, {}, "A");
    EXPECT_EQ(sent(), (Lines{"A 4: 01 02", "A 3: 00 00 00 00"}));
}

TEST_F(HIDPeripheralTest, RefusalsDelayAndNeverReorder) {
    connect("A");
    connect("B");
    send(ReportID::consumer, {1, 0}, "A");
    bluetooth.refuseNextUpdates(1);
    send(ReportID::consumer, {2, 0}, "A");
    EXPECT_EQ(sent(), Lines{"A 4: 01 00"});
    send(ReportID::consumer, {3, 0}, "B");
    bluetooth.refuseNextUpdates(9);
    send(ReportID::consumer, {4, 0}, "A");
    send(ReportID::consumer, {5, 0}, "A");
    bluetooth.becomeReady();
    EXPECT_EQ(sent(),
              (Lines{"A 4: 01 00", "A 4: 02 00", "B 4: 03 00", "A 4: 04 00", "A 4: 05 00"}));
}

TEST_F(HIDPeripheralTest, APhoneThatGoesHoldsUpNoOther) {
    connect("A");
    connect("B");
    bluetooth.refuseNextUpdates(2);
    send(ReportID::keyboard, kKeyDown, "A");
    send(ReportID::consumer, {1, 0}, "B");
    EXPECT_EQ(sent(), Lines{});
    disconnect("A");
    EXPECT_EQ(sent(), Lines{"B 4: 01 00"});
}

TEST_F(HIDPeripheralTest, APhoneThatComesBackGetsNothingOld) {
    connect("A");
    bluetooth.refuseNextUpdates(99);
    send(ReportID::keyboard, kKeyDown, "A");
    disconnect("A");
    bluetooth.becomeReady();
    bluetooth.subscribe("A", "1");
    EXPECT_EQ(sent(), Lines{"A 1: 00 00 00 00 00 00 00 00"});
}

TEST_F(HIDPeripheralTest, ForgetsThePhonesOfARadioThatWentOff) {
    connect("A");
    int changes = 0;
    hid.setOnHostsChanged([&changes] { ++changes; });
    bluetooth.refuseNextUpdates(99);
    send(ReportID::keyboard, kKeyDown, "A");
    bluetooth.changeState(BluetoothState::poweredOff);
    EXPECT_EQ(hid.state(), "bluetooth off");
    EXPECT_THAT(hid.connectedHosts(), IsEmpty());
    EXPECT_EQ(changes, 1);
    bluetooth.powerOn();
    bluetooth.becomeReady();
    EXPECT_EQ(hid.state(), "advertising as PocketLink");
    EXPECT_EQ(sent(), Lines{});
}

TEST_F(HIDPeripheralTest, AnswersReadsFromAnyOffset) {
    const struct {
        const char* characteristic;
        std::size_t offset;
        Bytes value;
        AttError error = AttError::none;
    } rows[] = {
        {"1", 0, Bytes(8)},
        {"2", 0, Bytes(5)},
        {"2", 3, Bytes(2)},
        {"2", 5, Bytes()},
        {"2", 6, {}, AttError::invalidOffset},
        {"2", static_cast<std::size_t>(-1), {}, AttError::invalidOffset},
        {"3", 0, Bytes(4)},
        {"4", 0, Bytes(2)},
        {"LEDs", 0, Bytes(1)},
        {"2A4E", 0, Bytes{1}},
        {"2A19", 0, Bytes{0x64}},
        {"2A4C", 0, {}, AttError::attributeNotFound},
        {"2A05", 9, {}, AttError::attributeNotFound},
    };
    for (const auto& row : rows) {
        const GattReadReply reply = bluetooth.read(row.characteristic, row.offset);
        EXPECT_EQ(reply.error, row.error) << row.characteristic << " at " << row.offset;
        EXPECT_EQ(reply.value, row.value) << row.characteristic;
    }
}

TEST_F(HIDPeripheralTest, TellsAPhoneWithAStaleCacheOnce) {
    bluetooth.subscribe("A", "2A05");
    logged();
    EXPECT_EQ(bluetooth.write("A", "2A4C", {0}), AttError::none);
    EXPECT_EQ(bluetooth.write("A", "2A4C", {1, 255}), AttError::none);
    EXPECT_EQ(sent(), Lines{"A 2A05: 10 00 ff ff"});
    EXPECT_EQ(logged(), (Lines{"control point write [0] from " + kIdA,
                               "stale cache on " + kIdA + ", indicating Service Changed",
                               "control point write [1, 255] from " + kIdA}));

    restart();
    bluetooth.powerOn();
    bluetooth.subscribe("A", "2A05");
    bluetooth.write("A", "2A4C", {0});
    EXPECT_EQ(sent(), (Lines{"A 2A05: 10 00 ff ff", "A 2A05: 10 00 ff ff"}));
}

TEST_F(HIDPeripheralTest, TellsNoOtherPhoneOfAStaleCache) {
    bluetooth.write("A", "2A4C", {0});  // subscribed to nothing
    bluetooth.subscribe("B", "2A05");
    bluetooth.subscribe("B", "1");  // found the reports
    bluetooth.clearTranscript();
    bluetooth.write("B", "2A4C", {0});
    bluetooth.unsubscribe("B", "1");
    bluetooth.write("B", "LEDs", {1});  // not the control point
    bluetooth.write("B", "2A4E", {1});
    EXPECT_EQ(sent(), Lines{});
}

TEST_F(HIDPeripheralTest, ServiceChangedOvertakesReports) {
    connect("B");
    bluetooth.subscribe("A", "2A05");
    bluetooth.refuseNextUpdates(99);
    send(ReportID::consumer, {1, 0}, "B");
    send(ReportID::consumer, {2, 0}, "B");
    bluetooth.write("A", "2A4C", {0});
    bluetooth.becomeReady();
    EXPECT_EQ(sent(), (Lines{"A 2A05: 10 00 ff ff", "B 4: 01 00", "B 4: 02 00"}));
}

TEST_F(HIDPeripheralTest, RestartDropsAllKnowledgeOfPhones) {
    connect("A");
    send(ReportID::keyboard, kKeyDown, "A");
    bluetooth.clearTranscript();
    int changes = 0;
    hid.setOnHostsChanged([&changes] { ++changes; });
    restart();
    EXPECT_EQ(sent(), Lines{"A 1: 00 00 00 00 00 00 00 00"});
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(hid.state(), "starting");
    EXPECT_THAT(hid.connectedHosts(), IsEmpty());
    EXPECT_EQ(bluetooth.advertising(), "");
    EXPECT_EQ(bluetooth.peripheralsMade(), 2);
    send(ReportID::keyboard, kKeyDown, "A");
    bluetooth.powerOn();
    EXPECT_EQ(sent(), Lines{"A 1: 00 00 00 00 00 00 00 00"});
    EXPECT_EQ(bluetooth.advertising(), "PocketLink: 1812");
}

TEST_F(HIDPeripheralTest, StopLetsGoOfWhatIsHeldAndOfNothingElse) {
    for (const char* phone : {"A", "B", "C"}) connect(phone);
    send(ReportID::keyboard, kKeyDown, "A");
    send(ReportID::relativeMouse, {1, 0, 0, 0}, "B");
    send(ReportID::absolutePointer, {1, 5, 0, 5, 0}, "B");
    send(ReportID::consumer, {0x23, 0x02}, "B");
    send(ReportID::relativeMouse, {0, 9, 9, 0}, "C");
    send(ReportID::keyboard, kKeyDown, "C");
    send(ReportID::keyboard, kKeyUp, "C");
    hid.state();
    bluetooth.clearTranscript();
    hid.stop();
    EXPECT_EQ(sent(), (Lines{"A 1: 00 00 00 00 00 00 00 00", "B 3: 00 00 00 00", "B 4: 00 00"}));
    EXPECT_FALSE(bluetooth.hasPeripheral());
    EXPECT_EQ(bluetooth.advertising(), "");

    hid.start();
    hid.restart();
    hid.state();
    EXPECT_FALSE(bluetooth.hasPeripheral());
}

TEST_F(HIDPeripheralTest, StopWaitsUntilTheSystemHasRoom) {
    connect("A");
    bluetooth.refuseNextUpdates(1'000);
    send(ReportID::keyboard, kKeyDown, "A");
    bluetooth.awaitRefused(1);
    std::thread stopper([&] { hid.stop(); });
    bluetooth.awaitRefused(2);
    bluetooth.becomeReady();
    stopper.join();
    EXPECT_EQ(sent(), (Lines{"A 1: 00 00 04 00 00 00 00 00", "A 1: 00 00 00 00 00 00 00 00"}));
}

TEST_F(HIDPeripheralTest, StopDoesNotWaitForever) {
    connect("A");
    bluetooth.refuseNextUpdates(1'000);
    send(ReportID::keyboard, kKeyDown, "A");
    std::thread stopper([&] { hid.stop(); });
    while (bluetooth.hasPeripheral()) clock.advance(std::chrono::milliseconds(50));
    stopper.join();
    EXPECT_EQ(sent(), Lines{});
    EXPECT_EQ(hid.state(), "stopped");
}

}  // namespace
}  // namespace tandrel
