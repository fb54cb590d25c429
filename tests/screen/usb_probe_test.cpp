#include "screen/usb_probe.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

class ListedUsb final : public UsbRegistry {
 public:
    std::vector<UsbDevice> devices() override {
        return {{0x5ac, "Apple Keyboard"},        {0x5ac, "iPhone"},
                {0x1d6b, "xHCI Host Controller"}, {0x1234, "iPhone dock"},
                {0x5ac, "Bob's iPhone"},          {0x5ac, ""}};
    }
};

TEST(USBProbe, NamesTheMakersPhonesOnly) {
    ListedUsb registry;
    EXPECT_EQ(USBProbe::iPhonesPluggedIn(registry),
              (std::vector<std::string>{"iPhone", "Bob's iPhone"}));
}

}  // namespace
}  // namespace tandrel
