#include "platform/linux/tesseract_strip_reader.h"

#include <filesystem>

#include <fmt/format.h>
#include <tesseract/baseapi.h>

// Of OpenMP; clang brings no header for it.
extern "C" void omp_set_max_active_levels(int levels);

namespace tandrel {

namespace {

// What an idle instance costs is about 30 MB; more callers at once than this make their own.
constexpr std::size_t kMostIdle = 2;
// The resolution that the library is told, so that a strip's letters are of an ordinary size.
constexpr int kStripResolution = 100;

StripText readOne(tesseract::TessBaseAPI& api, const Strip& strip) {
    api.SetImage(strip.pixels.data(), strip.columns, Strip::kRows, 1, strip.columns);
    api.SetSourceResolution(kStripResolution);
    if (api.Recognize(nullptr) != 0) return {};
    const std::unique_ptr<char[]> text(api.GetUTF8Text());
    if (!text) return {};
    return {.text = text.get(), .confidence = api.MeanTextConf() / 100.0};
}

}  // namespace

TesseractStripReader::TesseractStripReader(std::string folder, std::string languages)
    : folder_(std::move(folder)), languages_(std::move(languages)) {}

TesseractStripReader::~TesseractStripReader() = default;

Result<std::vector<StripText>> TesseractStripReader::read(std::span<const Strip> strips) {
    // The library's own threads spin against each other for lines as small as ours: several times
    // slower than one. This holds for the calling thread.
    omp_set_max_active_levels(0);
    Api api = TRY(take());
    std::vector<StripText> texts;
    for (const Strip& strip : strips) texts.push_back(readOne(*api, strip));
    giveBack(std::move(api));
    return texts;
}

Result<TesseractStripReader::Api> TesseractStripReader::take() {
    {
        MutexLock lock(mutex_);
        if (!idle_.empty()) {
            Api api = std::move(idle_.back());
            idle_.pop_back();
            return api;
        }
    }
    auto api = std::make_unique<tesseract::TessBaseAPI>();
    // The dictionaries change no text of a raw line, they only cost time.
    std::vector<std::string> names = {"load_system_dawg", "load_freq_dawg", "load_punc_dawg",
                                      "load_number_dawg", "debug_file",     "tessedit_do_invert"};
    std::vector<std::string> values = {"0", "0", "0", "0", "/dev/null", "0"};
    if (api->Init(folder_.c_str(), languages_.c_str(), tesseract::OEM_LSTM_ONLY, nullptr, 0, &names,
                  &values, false) != 0) {
        return fail(
            fmt::format("Text recognition for \"{}\" can't start from {}: install "
                        "tesseract-ocr-{}.",
                        languages_, folder_, languages_));
    }
    api->SetPageSegMode(tesseract::PSM_RAW_LINE);
    return api;
}

void TesseractStripReader::giveBack(Api api) {
    api->Clear();
    MutexLock lock(mutex_);
    if (idle_.size() < kMostIdle) idle_.push_back(std::move(api));
}

}  // namespace tandrel
