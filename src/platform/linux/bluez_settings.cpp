#include "platform/linux/bluez_settings.h"

#include <algorithm>
#include <charconv>

#include "base/file.h"
#include "base/unicode.h"

namespace tandrel::bluez {
namespace {

constexpr int kUsual = 3;
constexpr int kMost = 5;
constexpr std::size_t kLargestFile = 1024 * 1024;

}  // namespace

// A key file as GLib reads it: groups in brackets, "key = value", comments after "#", the last of
// several values counts.
int channelsOf(std::string_view settings) {
    int channels = kUsual;
    bool isGatt = false;
    while (!settings.empty()) {
        const auto end = std::min(settings.find('\n'), settings.size());
        const std::string line = trimmed(settings.substr(0, end));
        settings.remove_prefix(std::min(end + 1, settings.size()));
        if (line.starts_with('[')) isGatt = line == "[GATT]";
        const auto sign = line.find('=');
        if (!isGatt || line.starts_with('#') || sign == std::string::npos) continue;
        if (trimmed(line.substr(0, sign)) != "Channels") continue;
        const std::string value = trimmed(line.substr(sign + 1));
        int number = 0;
        const auto parsed = std::from_chars(value.data(), value.data() + value.size(), number);
        const bool isNumber = parsed.ec == std::errc() && parsed.ptr == value.data() + value.size();
        channels = isNumber && number >= 1 && number <= kMost ? number : kUsual;
    }
    return channels;
}

int readChannels(const std::filesystem::path& file) {
    const auto text = readFile(file, kLargestFile);
    return channelsOf(text ? *text : "");
}

}  // namespace tandrel::bluez
