#include "engine/screen_reader.h"

#include "screen/recognize.h"

namespace tandrel {

ScreenReader::ScreenReader(TextRecognizer& recognizer, Clock& clock)
    : recognizer_(recognizer), clock_(clock) {}

Result<ReadText> ScreenReader::read(const std::string& deviceId, const PixelBuffer& frame) {
    ReadText text = TRY(readText(recognizer_, frame));
    const PhoneScreen state = classify(texts(text.records), meanLuma(frame));
    MutexLock lock(mutex_);
    deviceId_ = deviceId;
    state_ = state;
    readAt_ = clock_.now();
    return text;
}

std::optional<ScreenReader::LastState> ScreenReader::lastState() const {
    MutexLock lock(mutex_);
    if (!readAt_) return std::nullopt;
    return LastState{deviceId_, state_, toSeconds(clock_.now() - *readAt_)};
}

std::vector<std::string> texts(const std::vector<TextRecord>& records) {
    std::vector<std::string> result;
    result.reserve(records.size());
    for (const TextRecord& record : records) result.push_back(record.text);
    return result;
}

}  // namespace tandrel
