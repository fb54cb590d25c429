#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/mutex.h"
#include "platform/text_recognizer.h"
#include "screen/phone_screen.h"

namespace tandrel {

// Reads the text of phone frames and remembers what the last one said about the phone's screen.
// Any thread; reading is slow.
class ScreenReader {
 public:
    ScreenReader(TextRecognizer& recognizer, Clock& clock);

    // An error is never an empty screen.
    Result<ReadText> read(const std::string& deviceId, const PixelBuffer& frame);

    struct LastState {
        std::string deviceId;
        PhoneScreen state = PhoneScreen::unknown;
        double ageSeconds = 0;
    };
    std::optional<LastState> lastState() const;

 private:
    TextRecognizer& recognizer_;
    Clock& clock_;
    mutable Mutex mutex_;
    std::string deviceId_ OWNED_BY(mutex_);
    PhoneScreen state_ OWNED_BY(mutex_) = PhoneScreen::unknown;
    std::optional<TimePoint> readAt_ OWNED_BY(mutex_);
};

std::vector<std::string> texts(const std::vector<TextRecord>& records);

}  // namespace tandrel
