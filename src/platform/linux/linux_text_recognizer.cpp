#include "platform/linux/linux_text_recognizer.h"

#include "base/environment.h"
#include "platform/linux/tesseract_strip_reader.h"
#include "reading/frame_reader.h"

namespace tandrel {

namespace {

constexpr const char* kDebianFolder = "/usr/share/tesseract-ocr/5/tessdata";

}  // namespace

Result<std::unique_ptr<TextRecognizer>> makeTextRecognizer() { return makeTextRecognizerWith({}); }

Result<std::unique_ptr<TextRecognizer>> makeTextRecognizerWith(const TextRecognizerOptions& options,
                                                               Clock& clock) {
    const std::string folder = options.folder.empty()
                                   ? environment("TESSDATA_PREFIX").value_or(kDebianFolder)
                                   : options.folder;
    return std::make_unique<FrameReader>(
        std::make_unique<TesseractStripReader>(folder, options.languages), clock);
}

}  // namespace tandrel
