#pragma once

#include <filesystem>

#include "base/result.h"

namespace tandrel {

// Whether Tandrel starts when the owner logs in: an entry of the XDG autostart folder. Off until
// the owner turns it on. Any thread.
class Autostart {
 public:
    // `bundle` is the app directory that is to start; `configHome` holds the folder "autostart".
    Autostart(std::filesystem::path bundle, const std::filesystem::path& configHome);

    // On means: an entry that the desktop obeys and that starts this copy.
    bool isOn() const;
    Result<void> turnOn() const;
    Result<void> turnOff() const;

 private:
    std::filesystem::path program() const { return bundle_ / "bin/tandrel-app"; }

    const std::filesystem::path bundle_;
    const std::filesystem::path entry_;
};

}  // namespace tandrel
