#include "platform/linux/bluez_advertisement.h"

#include "base/unicode.h"
#include "platform/linux/bluez_names.h"

namespace tandrel::bluez {
namespace {

constexpr std::size_t kLongestName = 29;
// Keyboard (Bluetooth Assigned Numbers, 2.6): the icon that the phone shows.
constexpr std::uint16_t kAppearance = 0x03C1;

}  // namespace

std::string advertisedName(const std::string& localName) {
    std::string name;
    for (const std::string& character : graphemes(localName)) {
        if (name.size() + character.size() > kLongestName) break;
        name += character;
    }
    return name;
}

Advertisement::Advertisement(sdbus::IConnection& bus, std::string path,
                             const std::string& localName,
                             const std::vector<std::string>& serviceUuids)
    : path_(std::move(path)), object_(sdbus::createObject(bus, path_)) {
    addConstant(*object_, kAdvertisement, "Type", std::string("peripheral"));
    addConstant(*object_, kAdvertisement, "LocalName", advertisedName(localName));
    addConstant(*object_, kAdvertisement, "ServiceUUIDs", serviceUuids);
    addConstant(*object_, kAdvertisement, "Appearance", kAppearance);
    addConstant(*object_, kAdvertisement, "Discoverable", true);
    object_->registerMethod("Release").onInterface(kAdvertisement).implementedAs([] {});
    object_->finishRegistration();
}

}  // namespace tandrel::bluez
