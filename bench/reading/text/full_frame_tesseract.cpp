#include "text/full_frame_tesseract.h"

#include <cstdlib>

#include <tesseract/baseapi.h>

#include "base/unicode.h"

namespace tandrel {

namespace {

class FullFrameTesseract : public TextRecognizer {
 public:
    FullFrameTesseract() {
        api_.Init(nullptr, "eng", tesseract::OEM_LSTM_ONLY);
        api_.SetVariable("debug_file", "/dev/null");
        api_.SetPageSegMode(tesseract::PSM_SPARSE_TEXT);
    }

    Result<ReadText> read(const PixelBuffer& image) override {
        api_.SetImage(image.pixels(), image.width(), image.height(), PixelBuffer::kBytesPerPixel,
                      image.rowBytes());
        if (api_.Recognize(nullptr) != 0) return fail("Tesseract failed.");
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
        constexpr auto kLevel = tesseract::RIL_TEXTLINE;
        const std::unique_ptr<char[]> line(lines.GetUTF8Text(kLevel));
        int left = 0, top = 0, right = 0, bottom = 0;
        if (!line || !lines.BoundingBox(kLevel, &left, &top, &right, &bottom)) return;
        text.records.push_back({.text = trimmed(line.get()),
                                .confidence = lines.Confidence(kLevel) / 100.0,
                                .x = static_cast<double>(left),
                                .y = static_cast<double>(top),
                                .width = static_cast<double>(right - left),
                                .height = static_cast<double>(bottom - top)});
    }

    tesseract::TessBaseAPI api_;
};

}  // namespace

std::unique_ptr<TextRecognizer> makeFullFrameTesseract() {
    return std::make_unique<FullFrameTesseract>();
}

}  // namespace tandrel
