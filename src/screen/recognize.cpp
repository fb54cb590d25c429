#include "screen/recognize.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace tandrel {

Result<ReadText> readText(TextRecognizer& recognizer, const PixelBuffer& image) {
    ReadText text = TRY(recognizer.read(image));
    std::ranges::stable_sort(
        text.records, {}, [](const TextRecord& record) { return std::tuple(record.y, record.x); });
    return text;
}

std::vector<TextRecord> recognize(TextRecognizer& recognizer, const PixelBuffer& image) {
    auto text = readText(recognizer, image);
    return text ? std::move(text->records) : std::vector<TextRecord>();
}

Json toJson(const TextRecord& record) {
    return {{"text", record.text},
            {"conf", record.confidence},
            {"x", std::llround(record.x)},
            {"y", std::llround(record.y)},
            {"w", std::llround(record.width)},
            {"h", std::llround(record.height)}};
}

Json toJson(const std::vector<TextRecord>& records) {
    Json list = Json::array();
    for (const TextRecord& record : records) list.push_back(toJson(record));
    return list;
}

}  // namespace tandrel
