#pragma once

#include "http/message.h"
#include "platform/text_recognizer.h"
#include "screen/window_capture.h"

namespace tandrel {

// What a request for the mirrored picture asks for.
struct AirPlayFrameOptions {
    SnapshotOptions image;
    bool crop = true;  // to the phone's screen
    bool ocr = false;  // as JSON with the text on it

    // Reads the path's ending and "maxEdge", "format", "crop" and "ocr"; a switch is off with
    // "0", "off", "no" or "false". The error names a number that is not a whole number from 1.
    static Result<AirPlayFrameOptions> parse(const HTTPRequest& request);
};

// The capture's newest frame in that form. Its pixels are read where they lie, never copied whole.
HTTPResponse airplayFrame(WindowCapture& capture, const AirPlayFrameOptions& options,
                          TextRecognizer& recognizer, const std::stop_token& clientGone);

// {"ok": false, "error": message}
HTTPResponse airplayError(std::string_view message, int status);

}  // namespace tandrel
