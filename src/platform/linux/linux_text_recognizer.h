#pragma once

#include <memory>
#include <string>

#include "base/clock.h"
#include "base/result.h"
#include "platform/text_recognizer.h"

namespace tandrel {

struct TextRecognizerOptions {
    // ISO 639-2 codes of the interface's languages as the traineddata files are called, joined
    // by "+", the most likely first.
    std::string languages = "eng";
    // The folder of the traineddata files; empty means trainedDataFolder().
    std::string folder = {};
};

// TESSDATA_PREFIX, else Debian's folder.
std::string trainedDataFolder();

// Reads text with the recogniser's own files, as Debian's tesseract-ocr-* packages install them. A
// missing file is no failure here but the error of every `read` until it is there.
Result<std::unique_ptr<TextRecognizer>> makeTextRecognizer();
Result<std::unique_ptr<TextRecognizer>> makeTextRecognizerWith(const TextRecognizerOptions& options,
                                                               Clock& clock = systemClock());

}  // namespace tandrel
