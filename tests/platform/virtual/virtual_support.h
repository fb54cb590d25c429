#pragma once

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "base/bytes.h"
#include "platform/bluetooth_peripheral.h"
#include "platform/virtual/scenario.h"
#include "platform/virtual/virtual_phone.h"

// Shared by the tests of the virtual phone.
namespace tandrel::test {

inline std::filesystem::path shareFolder() {
    return std::filesystem::path(TANDREL_SOURCE_DIR) / "share/tandrel";
}

// "05 01" as bytes.
Bytes hex(std::string_view text);

// A keyboard (1), an absolute pointer (2), a relative mouse (3) and consumer controls (4), 198
// bytes.
const Bytes& keyboardAndPointers();

// A scenario of one small phone (402 x 874 points, 1 pixel a point) with these pages, a JSON list,
// of which the first is the home page; `phone` are further members of the phone.
std::string scenarioText(const std::string& pages, const std::string& phone = "");
Scenario scenario(const std::string& pages, const std::string& phone = "");

// The services of a keyboard and pointer with the map above. Characteristics are numbered: report
// map 1, reports by id 11 to 14, LED output 15, control point 20, battery level 30, Service
// Changed 40.
std::vector<GattService> hidServices();

// The brightest and the darkest of red, green and blue at a pixel.
struct PixelRange {
    int darkest = 0;
    int brightest = 0;
};
PixelRange pixelAt(const PixelBuffer& frame, ScreenFraction at);

}  // namespace tandrel::test
