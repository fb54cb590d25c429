#pragma once

#include <string>

// The desktop's notifications and its sounds.
namespace tandrel {

class Notifications {
 public:
    virtual ~Notifications() = default;
    // Shows the text, replacing what was posted under the same identifier. It has no buttons:
    // nothing can be answered in it. Returns at once; a desktop without notifications shows
    // nothing.
    virtual void post(const std::string& identifier, const std::string& title,
                      const std::string& text) = 0;
    virtual void withdraw(const std::string& identifier) = 0;
    // Plays the sound that calls for the owner's attention. Returns at once.
    virtual void playAttentionSound() = 0;
};

}  // namespace tandrel
