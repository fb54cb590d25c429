#pragma once

#include "platform/extended_attributes.h"

namespace tandrel {

// xattr(7); names lie below "user.".
class XattrExtendedAttributes final : public ExtendedAttributes {
 public:
    // The kernel keeps no larger ones.
    static constexpr std::size_t kLargest = 64 * 1024;

    std::optional<std::string> text(const std::filesystem::path& file,
                                    std::string_view name) override;
};

}  // namespace tandrel
