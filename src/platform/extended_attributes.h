#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

// Small texts that the file system keeps with a file.
namespace tandrel {

class ExtendedAttributes {
 public:
    virtual ~ExtendedAttributes() = default;
    // Absent when the file, the attribute or the file system's support for it is missing, or when
    // the attribute is empty. Any thread.
    virtual std::optional<std::string> text(const std::filesystem::path& file,
                                            std::string_view name) = 0;
};

}  // namespace tandrel
