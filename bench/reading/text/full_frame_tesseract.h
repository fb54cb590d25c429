#pragma once

#include <memory>

#include "platform/text_recognizer.h"

namespace tandrel {

// What everything is compared with: Tesseract on the whole frame, page segmentation mode 11
// ("sparse text"), one thread.
std::unique_ptr<TextRecognizer> makeFullFrameTesseract();

}  // namespace tandrel
