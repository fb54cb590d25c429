#include "platform/virtual/virtual_support.h"

#include <algorithm>
#include <charconv>

namespace tandrel::test {

Bytes hex(std::string_view text) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 3) {
        std::uint8_t byte = 0;
        std::from_chars(text.data() + i, text.data() + i + 2, byte, 16);
        bytes.push_back(byte);
    }
    return bytes;
}

const Bytes& keyboardAndPointers() {
    static const Bytes map = hex(
        "05 01 09 06 a1 01 85 01 05 07 19 e0 29 e7 15 00 25 01 75 01 95 08 81 02 95 01 75 08 81 01 "
        "95 06 75 08 15 00 25 65 05 07 19 00 29 65 81 00 95 05 75 01 05 08 19 01 29 05 91 02 95 01 "
        "75 03 91 01 c0 "
        "05 01 09 02 a1 01 85 02 09 01 a1 00 05 09 19 01 29 03 15 00 25 01 95 03 75 01 81 02 95 01 "
        "75 05 81 01 05 01 09 30 09 31 16 00 00 26 ff 7f 75 10 95 02 81 02 c0 c0 "
        "05 01 09 02 a1 01 85 03 09 01 a1 00 05 09 19 01 29 03 15 00 25 01 95 03 75 01 81 02 95 01 "
        "75 05 81 01 05 01 09 30 09 31 09 38 15 81 25 7f 75 08 95 03 81 06 c0 c0 "
        "05 0c 09 01 a1 01 85 04 15 00 26 ff 03 19 00 2a ff 03 75 10 95 01 81 00 c0");
    return map;
}

std::string scenarioText(const std::string& pages, const std::string& phone) {
    return R"({"phone": {"id": "A", "name": "Phone A",
        "host": "00000000-0000-0000-0000-00000000000A",
        "width": 402, "height": 874, "scale": 1)" +
           (phone.empty() ? "" : ", " + phone) + R"(}, "home": "home", "pages": )" + pages + "}";
}

Scenario scenario(const std::string& pages, const std::string& phone) {
    auto scenario = parseScenario(scenarioText(pages, phone), "test.json");
    if (!scenario) {
        ADD_FAILURE() << scenario.error().message;
        return *parseScenario(scenarioText(R"([{"name": "home", "items": []}])"), "empty");
    }
    return *std::move(scenario);
}

namespace {

GattCharacteristic report(CharacteristicId id, const char* reference) {
    return {id,
            "2A4D",
            {.read = true, .notify = true},
            {.readNeedsEncryption = true},
            std::nullopt,
            {{"2908", hex(reference)}}};
}

GattCharacteristic notifying(CharacteristicId id, const char* uuid) {
    return {id, uuid, {.read = true, .notify = true}, {.readable = true}, std::nullopt, {}};
}

}  // namespace

std::vector<GattService> hidServices() {
    const GattCharacteristic map{
        1, "2A4B", {.read = true}, {.readNeedsEncryption = true}, keyboardAndPointers(), {}};
    GattCharacteristic leds = report(15, "01 02");
    leds.properties = {.read = true, .write = true, .writeWithoutResponse = true};
    const GattCharacteristic controlPoint{
        20,           "2A4C", {.writeWithoutResponse = true}, {.writeNeedsEncryption = true},
        std::nullopt, {}};
    return {{"00001801-0000-1000-8000-00805F9B34FB", {notifying(40, "2A05")}},
            {"00001812-0000-1000-8000-00805F9B34FB",
             {map, controlPoint, report(11, "01 01"), report(12, "02 01"), report(13, "03 01"),
              report(14, "04 01"), leds}},
            {"0000180F-0000-1000-8000-00805F9B34FB", {notifying(30, "2A19")}}};
}

PixelRange pixelAt(const PixelBuffer& frame, ScreenFraction at) {
    const int x = std::clamp(static_cast<int>(at.x * frame.width()), 0, frame.width() - 1);
    const int y = std::clamp(static_cast<int>(at.y * frame.height()), 0, frame.height() - 1);
    const std::uint8_t* pixel = frame.row(y) + x * PixelBuffer::kBytesPerPixel;
    const auto [darkest, brightest] = std::minmax_element(pixel, pixel + 3);
    return {*darkest, *brightest};
}

}  // namespace tandrel::test
