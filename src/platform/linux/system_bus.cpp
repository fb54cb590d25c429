#include "platform/linux/system_bus.h"

namespace tandrel {

Result<std::unique_ptr<sdbus::IConnection>> openSystemBus(const std::string& address) {
    try {
        return address.empty() ? sdbus::createSystemBusConnection()
                               : sdbus::createSessionBusConnectionWithAddress(address);
    } catch (const sdbus::Error& error) {
        return fail(error.what());
    }
}

}  // namespace tandrel
