#pragma once

#include <string>
#include <string_view>

#include "base/bytes.h"

// Writes a stream as GStreamer's "gdppay" does.
namespace tandrel::gdp {

inline Bytes message(int type, std::string_view payload) {
    Bytes bytes(62, 0);
    const auto put = [&](std::size_t at, std::size_t value) {
        bytes[at] = static_cast<std::uint8_t>(value & 0xff);
    };
    put(0, 1);
    put(4, static_cast<std::size_t>(type) >> 8);
    put(5, static_cast<std::size_t>(type));
    for (std::size_t i = 0; i < 4; ++i) put(6 + i, payload.size() >> (24 - 8 * i));
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    return bytes;
}

inline Bytes caps(int width, int height, const std::string& more = "") {
    std::string text = "video/x-raw, format=(string)I420, width=(int)" + std::to_string(width) +
                       ", height=(int)" + std::to_string(height) + more;
    text.push_back('\0');
    return message(2, text);
}

inline Bytes event() { return message(64 + 40, "segment"); }

// One colour; padding is 0x55 so that it shows where it is taken for pixels.
inline Bytes frame(int width, int height, int y = 128, int u = 128, int v = 128) {
    std::string payload;
    const auto plane = [&payload](int columns, int rows, int value) {
        for (int row = 0; row < rows; ++row) {
            payload.append(static_cast<std::size_t>(columns), static_cast<char>(value));
            payload.append(static_cast<std::size_t>(-columns & 3), '\x55');
        }
    };
    const int rows = (height + 1) & ~1;
    plane(width, rows, y);
    plane((width + 1) / 2, rows / 2, u);
    plane((width + 1) / 2, rows / 2, v);
    return message(1, payload);
}

}  // namespace tandrel::gdp
