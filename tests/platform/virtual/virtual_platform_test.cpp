#include "platform/virtual/virtual_platform.h"

#include <semaphore>

#include <gmock/gmock.h>

#include "platform/virtual/virtual_support.h"

namespace tandrel {
namespace {

using testing::IsEmpty;

std::unique_ptr<VirtualPlatform> open(const std::string& choice) {
    auto platform = VirtualPlatform::open(choice, test::shareFolder(), systemClock());
    EXPECT_TRUE(platform) << platform.error().message;
    return platform ? *std::move(platform) : nullptr;
}

std::string second() { return (test::shareFolder() / "scenarios/second.json").string(); }

// Calls that came; a test takes them one by one.
class Calls {
 public:
    void add() { calls_.release(); }
    bool await() { return calls_.try_acquire_for(std::chrono::seconds(10)); }
    // Whether any is left; none afterwards.
    bool take() {
        bool any = false;
        while (calls_.try_acquire()) any = true;
        return any;
    }

 private:
    std::counting_semaphore<> calls_{0};
};

TEST(VirtualPlatform, PhonesOfTheSameScenarioAreToldApart) {
    const auto platform = open("1:" + second() + "::1:1");
    std::vector<std::string> phones;
    for (const auto& phone : platform->phones()) {
        const PhoneTraits& traits = phone->traits();
        phones.push_back(traits.id + " " + traits.name + " " + traits.host.text().substr(34));
    }
    EXPECT_THAT(phones, testing::ElementsAre("VIRTUAL-0001 Virtual iPhone 01",
                                             "VIRTUAL-0002 Second iPhone 02",
                                             "VIRTUAL-0001-2 Virtual iPhone 2 03",
                                             "VIRTUAL-0001-3 Virtual iPhone 3 04"));
}

TEST(VirtualPlatform, WhatCannotBeOpenedIsSaid) {
    const std::pair<const char*, const char*> rows[] = {
        {"", "no scenario is named"},
        {":", "no scenario is named"},
        {"1:/nonexistent.json", "/nonexistent.json"},
        {"1:1:1:1:1:1:1:1:1:1:1:1:1:1:1:1:1", "at most 16 virtual phones"},
    };
    for (const auto& [choice, error] : rows) {
        const auto platform = VirtualPlatform::open(choice, test::shareFolder(), systemClock());
        ASSERT_FALSE(platform) << choice;
        EXPECT_THAT(platform.error().message, testing::HasSubstr(error));
    }
}

TEST(VirtualPlatform, PluggedPhonesAreOnTheBusAndAmongTheDevices) {
    const auto platform = open("1:" + second());
    platform->phones()[0]->unplug();
    const auto usb = platform->usbRegistry().devices();
    ASSERT_THAT(usb, testing::SizeIs(1));
    EXPECT_EQ(usb[0].vendorId, 1452);
    EXPECT_THAT(usb[0].productName, testing::HasSubstr("iPhone"));
    EXPECT_THAT(platform->captureDevices().devices(),
                testing::ElementsAre(
                    CaptureDeviceInfo{"VIRTUAL-0002", "Second iPhone", "iOS Device", true}));
    EXPECT_EQ(platform->permissions().camera(), Permission::granted);
}

TEST(VirtualCaptureDevices, TellsOfPluggingAndUnpluggingAlone) {
    const auto platform = open("1");
    VirtualPhone& phone = *platform->phones()[0];
    Calls calls;
    platform->captureDevices().setOnDevicesChanged([&] { calls.add(); });
    phone.disconnectBluetooth();
    phone.unplug();
    EXPECT_TRUE(calls.await());
    phone.plug();
    EXPECT_TRUE(calls.await());
    platform->captureDevices().setOnDevicesChanged({});
    phone.unplug();
    EXPECT_FALSE(calls.take());
}

// What the system does on a change: looks at the devices and opens or ends sessions, all from the
// call that told of it.
TEST(VirtualCaptureDevices, DevicesCanBeOpenedFromTheCallThatTellsOfThem) {
    const auto platform = open("1");
    CaptureDevices& devices = platform->captureDevices();
    VirtualPhone& phone = *platform->phones()[0];
    std::unique_ptr<CaptureSession> session;
    Calls frames;
    Calls calls;
    devices.setOnDevicesChanged([&] {
        session.reset();
        for (const auto& device : devices.devices()) {
            session = *devices.open(device, [&](const PixelBuffer&) { frames.add(); });
        }
        calls.add();
    });
    phone.unplug();
    phone.plug();
    EXPECT_TRUE(calls.await() && calls.await());
    EXPECT_TRUE(frames.await() && frames.await() && frames.await());
    devices.setOnDevicesChanged({});
    session.reset();
    frames.take();
    phone.showPage("settings");
    EXPECT_FALSE(frames.take()) << "no frame after the session ended";
}

TEST(VirtualCaptureDevices, SessionOutlivesUnpluggingWithoutFrames) {
    const auto platform = open("1");
    VirtualPhone& phone = *platform->phones()[0];
    const auto device = platform->captureDevices().devices().at(0);
    Calls frames;
    const auto session =
        platform->captureDevices().open(device, [&](const PixelBuffer&) { frames.add(); });
    ASSERT_TRUE(session);
    phone.unplug();
    for (const auto& gone : {device, CaptureDeviceInfo{"x", "Other", "iOS Device", true}}) {
        EXPECT_EQ(platform->captureDevices().open(gone, {}).error().message,
                  gone.name + " is not plugged in");
    }
    frames.take();
    phone.showPage("settings");
    EXPECT_FALSE(frames.take());
    phone.plug();
    EXPECT_TRUE(frames.take());
}

}  // namespace
}  // namespace tandrel
