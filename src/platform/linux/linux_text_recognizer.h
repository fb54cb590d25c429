#pragma once

#include <memory>

#include "base/result.h"
#include "platform/text_recognizer.h"

namespace tandrel {

// Tesseract with Debian's English model.
Result<std::unique_ptr<TextRecognizer>> makeTextRecognizer();

}  // namespace tandrel
