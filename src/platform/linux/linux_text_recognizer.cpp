#include "platform/linux/linux_text_recognizer.h"

#include "base/environment.h"
#include "platform/linux/tesseract_strip_reader.h"
#include "reading/frame_reader.h"
#include "reading/trained_strip_reader.h"

namespace tandrel {

namespace {

constexpr const char* kDebianFolder = "/usr/share/tesseract-ocr/5/tessdata";

}  // namespace

std::string trainedDataFolder() { return environment("TESSDATA_PREFIX").value_or(kDebianFolder); }

Result<std::unique_ptr<TextRecognizer>> makeTextRecognizer() { return makeTextRecognizerWith({}); }

Result<std::unique_ptr<TextRecognizer>> makeTextRecognizerWith(const TextRecognizerOptions& options,
                                                               Clock& clock) {
    const std::string folder = options.folder.empty() ? trainedDataFolder() : options.folder;
    auto fallback = std::make_unique<TesseractStripReader>(folder, options.languages);
    auto strips =
        std::make_unique<TrainedStripReader>(folder, options.languages, std::move(fallback));
    return std::make_unique<FrameReader>(std::move(strips), clock);
}

}  // namespace tandrel
