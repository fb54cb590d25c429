#include "platform/virtual/virtual_platform.h"

#include <algorithm>
#include <functional>
#include <ranges>

#include "platform/virtual/virtual_bluetooth_peripheral.h"
#include "platform/virtual/virtual_windows.h"

namespace tandrel {
namespace {

class AllGranted final : public Permissions {
 public:
    Permission bluetooth() override { return Permission::granted; }
    Permission camera() override { return Permission::granted; }
    Permission screenRecording() override { return Permission::granted; }
};

class VirtualUsbRegistry final : public UsbRegistry {
 public:
    explicit VirtualUsbRegistry(std::vector<VirtualPhone*> phones) : phones_(std::move(phones)) {}

    std::vector<UsbDevice> devices() override {
        constexpr int kVendor = 0x5AC;
        std::vector<UsbDevice> devices;
        for (VirtualPhone* phone : phones_) {
            if (phone->links().plugged) devices.push_back({kVendor, "iPhone"});
        }
        return devices;
    }

 private:
    const std::vector<VirtualPhone*> phones_;
};

// Tells the phone apart from the earlier ones, which may be made of the same scenario.
void makeUnique(PhoneTraits& phone, const std::vector<Scenario>& earlier) {
    const auto taken = [&earlier](const auto& part, const auto& value) {
        return std::ranges::any_of(earlier, [&](const Scenario& other) {
            return std::invoke(part, other.phone) == value;
        });
    };
    const PhoneTraits original = phone;
    for (int number = 2; taken(&PhoneTraits::id, phone.id); ++number) {
        phone.id = original.id + "-" + std::to_string(number);
        phone.name = original.name + " " + std::to_string(number);
    }
    auto bytes = phone.host.bytes();
    while (taken(&PhoneTraits::host, Uuid(bytes))) ++bytes.back();
    phone.host = Uuid(bytes);
}

}  // namespace

Result<std::unique_ptr<VirtualPlatform>> VirtualPlatform::open(std::string_view choice,
                                                               const std::filesystem::path& share,
                                                               Clock& clock) {
    std::vector<Scenario> scenarios;
    for (const auto part : std::views::split(choice, ':')) {
        const std::string name(part.begin(), part.end());
        if (name.empty()) continue;
        if (scenarios.size() == kMostPhones) {
            return fail("there can be at most " + std::to_string(kMostPhones) + " virtual phones");
        }
        const auto file =
            name == "1" ? share / "scenarios" / "default.json" : std::filesystem::path(name);
        Scenario scenario = TRY(loadScenario(file));
        makeUnique(scenario.phone, scenarios);
        scenarios.push_back(std::move(scenario));
    }
    if (scenarios.empty()) return fail("no scenario is named for the virtual phone");
    return std::unique_ptr<VirtualPlatform>(new VirtualPlatform(std::move(scenarios), clock));
}

VirtualPlatform::VirtualPlatform(std::vector<Scenario> scenarios, Clock& clock) {
    std::vector<VirtualPhone*> phones;
    for (Scenario& scenario : scenarios) {
        phones_.push_back(std::make_unique<VirtualPhone>(std::move(scenario), clock));
        phones.push_back(phones_.back().get());
    }
    makeBluetooth_ = makeVirtualBluetoothPeripheral(phones);
    captureDevices_ = std::make_unique<VirtualCaptureDevices>(phones);
    windows_ = std::make_unique<VirtualWindows>(phones);
    permissions_ = std::make_unique<AllGranted>();
    usbRegistry_ = std::make_unique<VirtualUsbRegistry>(phones);
}

}  // namespace tandrel
