#include "platform/linux/system_bus.h"

namespace tandrel {

Result<std::unique_ptr<sdbus::IConnection>> openSystemBus() {
    try {
        return sdbus::createSystemBusConnection();
    } catch (const sdbus::Error& error) {
        return fail(error.what());
    }
}

}  // namespace tandrel
