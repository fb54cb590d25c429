#include "platform/linux/xattr_extended_attributes.h"

#include <sys/xattr.h>

namespace tandrel {

std::optional<std::string> XattrExtendedAttributes::text(const std::filesystem::path& file,
                                                         std::string_view name) {
    std::string value(kLargest, '\0');
    const std::string full = "user." + std::string(name);
    const ssize_t size = ::getxattr(file.c_str(), full.c_str(), value.data(), value.size());
    if (size <= 0) return std::nullopt;
    value.resize(static_cast<std::size_t>(size));
    return value;
}

}  // namespace tandrel
