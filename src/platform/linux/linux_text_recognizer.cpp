#include "platform/linux/linux_text_recognizer.h"

#include <tesseract/baseapi.h>
#include <tesseract/resultiterator.h>

#include <cmath>
#include <cstdlib>

#include "base/mutex.h"
#include "base/unicode.h"

namespace tandrel {
namespace {

constexpr const char* kNoModel =
    "Tandrel can't read text: the model \"eng\" is missing (apt install tesseract-ocr-eng)";

class TesseractRecognizer final : public TextRecognizer {
 public:
    TesseractRecognizer() {
        // Tesseract's own threads only spin against each other on small pictures.
        ::setenv("OMP_THREAD_LIMIT", "1", 1);
    }

    Result<ReadText> read(const PixelBuffer& image) override {
        MutexLock oneAtATime(mutex_);
        if (!ready_) {
            if (api_.Init(nullptr, "eng", tesseract::OEM_LSTM_ONLY) != 0) return fail(kNoModel, 500);
            api_.SetPageSegMode(tesseract::PSM_SPARSE_TEXT);
            ready_ = true;
        }
        api_.SetImage(image.pixels(), image.width(), image.height(), PixelBuffer::kBytesPerPixel,
                      image.rowBytes());
        if (api_.Recognize(nullptr) != 0) return fail("Tandrel couldn't read the text", 500);
        ReadText text;
        const std::unique_ptr<tesseract::ResultIterator> lines(api_.GetIterator());
        if (!lines) return text;
        do {
            add(*lines, text);
        } while (lines->Next(tesseract::RIL_TEXTLINE));
        return text;
    }

 private:
    static void add(const tesseract::ResultIterator& lines, ReadText& text) {
        constexpr auto level = tesseract::RIL_TEXTLINE;
        const std::unique_ptr<char[]> line(lines.GetUTF8Text(level));
        int left = 0;
        int top = 0;
        int right = 0;
        int bottom = 0;
        if (!line || !lines.BoundingBox(level, &left, &top, &right, &bottom)) return;
        std::string trimmedLine = trimmed(line.get());
        if (trimmedLine.empty()) return;
        text.records.push_back({.text = std::move(trimmedLine),
                                .confidence = lines.Confidence(level) / 100.0,
                                .x = static_cast<double>(left),
                                .y = static_cast<double>(top),
                                .width = static_cast<double>(right - left),
                                .height = static_cast<double>(bottom - top)});
    }

    Mutex mutex_;
    bool ready_ OWNED_BY(mutex_) = false;
    tesseract::TessBaseAPI api_ OWNED_BY(mutex_);
};

}  // namespace

Result<std::unique_ptr<TextRecognizer>> makeTextRecognizer() {
    return std::make_unique<TesseractRecognizer>();
}

}  // namespace tandrel
