#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"

// The owner's settings and what is remembered between runs. Keys in use: "paused", "link",
// "grabber", "askBeforePayments", "askWhenUnsure", "languages", "setupDone", "phoneWasSetUp",
// "helperRan", "claudeCodeAdded", "claudeDesktopAdded", "codexAdded".
namespace tandrel {

class UserDefaults {
 public:
    virtual ~UserDefaults() = default;
    // Absent when the key is not set or holds another type. Any thread; reads what other copies of
    // the program wrote, too.
    virtual std::optional<bool> boolValue(std::string_view key) const = 0;
    virtual std::optional<std::string> textValue(std::string_view key) const = 0;
    // Kept when the call returns without error. Every other key stays as it was.
    virtual Result<void> set(std::string_view key, bool value) = 0;
    virtual Result<void> set(std::string_view key, std::string value) = 0;
    // A literal is a text; without this it would be taken for a bool.
    Result<void> set(std::string_view key, const char* value) {
        return set(key, std::string(value));
    }
};

}  // namespace tandrel
