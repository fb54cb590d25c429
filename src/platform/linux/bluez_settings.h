#pragma once

#include <filesystem>
#include <string_view>

// The Bluetooth service's settings file, as far as it concerns a keyboard.
namespace tandrel::bluez {

inline constexpr const char* kSettingsFile = "/etc/bluetooth/main.conf";

// How many channels the service may open on one link, by the file's text; what it does by itself
// where the text says nothing that it would understand. Reports that travel on several channels
// can change places in a host that lags behind.
int channelsOf(std::string_view settings);
// By the file; a file that can't be read says nothing.
int readChannels(const std::filesystem::path& file = kSettingsFile);

}  // namespace tandrel::bluez
