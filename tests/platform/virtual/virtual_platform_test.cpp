#include "platform/virtual/virtual_platform.h"

#include <condition_variable>
#include <mutex>

#include <gmock/gmock.h>

#include "platform/virtual/virtual_support.h"

namespace tandrel {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

std::unique_ptr<VirtualPlatform> open(const std::string& choice) {
    auto platform = VirtualPlatform::open(choice, test::shareFolder(), systemClock());
    EXPECT_TRUE(platform) << platform.error().message;
    return platform ? *std::move(platform) : nullptr;
}

std::string second() { return (test::shareFolder() / "scenarios/second.json").string(); }

// Counts calls and lets a test wait for them.
class Calls {
 public:
    void add() {
        const std::lock_guard lock(mutex_);
        ++count_;
        changed_.notify_all();
    }
    bool await(int count) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(10), [&] { return count_ >= count; });
    }
    int count() {
        const std::lock_guard lock(mutex_);
        return count_;
    }

 private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int count_ = 0;
};

TEST(VirtualPlatform, OneIsTheDefaultPhone) {
    const auto platform = open("1");
    ASSERT_THAT(platform->phones(), SizeIs(1));
    EXPECT_EQ(platform->phones()[0]->traits().name, "Virtual iPhone");
    EXPECT_EQ(platform->phones()[0]->frame().width(), 1206);
    EXPECT_EQ(platform->phones()[0]->frame().height(), 2622);
}

TEST(VirtualPlatform, PhonesOfTheSameScenarioAreToldApart) {
    const auto platform = open("1:" + second() + "::1:1");
    std::vector<std::string> ids;
    std::vector<std::string> names;
    std::vector<std::string> hosts;
    for (const auto& phone : platform->phones()) {
        ids.push_back(phone->traits().id);
        names.push_back(phone->traits().name);
        hosts.push_back(phone->traits().host.text().substr(34));
    }
    EXPECT_THAT(ids,
                ElementsAre("VIRTUAL-0001", "VIRTUAL-0002", "VIRTUAL-0001-2", "VIRTUAL-0001-3"));
    EXPECT_THAT(names, ElementsAre("Virtual iPhone", "Second iPhone", "Virtual iPhone 2",
                                   "Virtual iPhone 3"));
    EXPECT_THAT(hosts, ElementsAre("01", "02", "03", "04"));
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
        EXPECT_THAT(platform.error().message, HasSubstr(error));
    }
}

TEST(VirtualPlatform, PluggedPhonesAreOnTheBusAndAmongTheDevices) {
    const auto platform = open("1:" + second());
    platform->phones()[0]->unplug();
    const auto usb = platform->usbRegistry().devices();
    ASSERT_THAT(usb, SizeIs(1));
    EXPECT_EQ(usb[0].vendorId, 1452);
    EXPECT_THAT(usb[0].productName, HasSubstr("iPhone"));
    EXPECT_THAT(
        platform->captureDevices().devices(),
        ElementsAre(CaptureDeviceInfo{"VIRTUAL-0002", "Second iPhone", "iOS Device", true}));
    EXPECT_EQ(platform->permissions().camera(), Permission::granted);
}

TEST(VirtualCaptureDevices, TellsOfPluggingAndUnpluggingAlone) {
    const auto platform = open("1");
    VirtualPhone& phone = *platform->phones()[0];
    Calls calls;
    platform->captureDevices().setOnDevicesChanged([&] { calls.add(); });
    phone.disconnectBluetooth();
    phone.unplug();
    EXPECT_TRUE(calls.await(1));
    phone.plug();
    EXPECT_TRUE(calls.await(2));
    platform->captureDevices().setOnDevicesChanged({});
    phone.unplug();
    EXPECT_EQ(calls.count(), 2);
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
    EXPECT_TRUE(calls.await(2));
    EXPECT_TRUE(frames.await(3));
    devices.setOnDevicesChanged({});
    session.reset();
    const int count = frames.count();
    phone.showPage("settings");
    EXPECT_EQ(frames.count(), count) << "no frame after the session ended";
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
    EXPECT_FALSE(platform->captureDevices().open(device, [](const PixelBuffer&) {}));
    const int count = frames.count();
    phone.showPage("settings");
    EXPECT_EQ(frames.count(), count);
    phone.plug();
    EXPECT_GT(frames.count(), count);
}

TEST(VirtualCaptureDevices, UnknownDeviceIsAnError) {
    const auto platform = open("1");
    const auto session =
        platform->captureDevices().open({.id = "x", .name = "Other", .modelId = "iOS Device"}, {});
    ASSERT_FALSE(session);
    EXPECT_EQ(session.error().message, "Other is not plugged in");
}

}  // namespace
}  // namespace tandrel
