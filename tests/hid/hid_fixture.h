#pragma once

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "hid/fake_bluetooth.h"
#include "hid/hid_peripheral.h"
#include "support/manual_clock.h"

namespace tandrel {

// The clock of a fixture, as a base that is constructed before the peripheral that needs it.
template <typename ClockType>
struct ClockFirst {
    ClockType clock;
};

// A peripheral that is published and advertising on a simulated Bluetooth system.
class HidFixture : public testing::Test {
 protected:
    explicit HidFixture(Clock& clock) : hid("PocketLink", bluetooth.maker(), clock) {}

    void SetUp() override { begin(); }

    void begin() {
        hid.start();
        hid.state();
        bluetooth.powerOn();
    }

    // Subscribes to the four input reports as a phone does on connecting.
    void subscribeAll(const std::string& phone) {
        for (const char* report : {"1", "2", "3", "4"}) bluetooth.subscribe(phone, report);
    }

    // The same, leaving nothing of it in the transcript.
    void connect(const std::string& phone) {
        subscribeAll(phone);
        bluetooth.clearTranscript();
    }

    void disconnect(const std::string& phone) {
        for (const char* report : {"1", "2", "3", "4"}) bluetooth.unsubscribe(phone, report);
    }

    void send(ReportID id, std::vector<std::uint8_t> bytes, const std::string& phone) {
        hid.send(id, bytes, FakeBluetooth::phone(phone));
    }

    std::vector<std::string> sent() { return bluetooth.transcript(); }

    FakeBluetooth bluetooth;
    HIDPeripheral hid;
};

}  // namespace tandrel
