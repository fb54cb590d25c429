#include "reading/trained_strip_reader.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include <fmt/format.h>

#include "base/bytes.h"
#include "base/file.h"
#include "base/log.h"
#include "reading/network_strip_reader.h"

namespace tandrel {

namespace {

std::vector<std::string> languagesOf(const std::string& joined) {
    std::vector<std::string> languages;
    std::istringstream names(joined);
    for (std::string name; std::getline(names, name, '+');) languages.push_back(name);
    return languages;
}

std::filesystem::path pathOf(const std::string& folder, const std::string& language) {
    return std::filesystem::path(folder) / (language + ".traineddata");
}

}  // namespace

Result<void> findTrainedData(const std::string& folder, const std::string& languages) {
    for (const std::string& language : languagesOf(languages)) {
        const auto path = pathOf(folder, language);
        std::error_code error;
        if (std::filesystem::exists(path, error)) continue;
        std::string package = language;
        std::ranges::replace(package, '_', '-');
        return fail(fmt::format("Tandrel can't read text: {} is missing (apt install "
                                "tesseract-ocr-{}).",
                                path.string(), package),
                    500);
    }
    return {};
}

TrainedStripReader::TrainedStripReader(std::string folder, std::string languages,
                                       std::unique_ptr<StripReader> fallback)
    : folder_(std::move(folder)),
      languages_(std::move(languages)),
      fallback_(std::move(fallback)) {}

TrainedStripReader::~TrainedStripReader() = default;

Result<std::vector<StripText>> TrainedStripReader::read(std::span<const Strip> strips) {
    const auto readers = TRY(this->readers());
    if (readers->empty()) return fallback_->read(strips);
    auto texts = TRY(readers->front()->read(strips));
    // Where several languages may be on the screen, the surer reading of each line counts.
    for (std::size_t i = 1; i < readers->size(); ++i) {
        auto others = TRY((*readers)[i]->read(strips));
        for (std::size_t j = 0; j < texts.size(); ++j) {
            if (others[j].confidence > texts[j].confidence) texts[j] = std::move(others[j]);
        }
    }
    return texts;
}

Result<std::shared_ptr<const TrainedStripReader::Readers>> TrainedStripReader::readers() {
    // Others wait for who loads, instead of loading too.
    MutexLock lock(mutex_);
    if (!readers_) {
        auto loaded = TRY(load());
        if (loaded->empty()) log("Text is read by libtesseract, which takes several times longer.");
        readers_ = std::move(loaded);
    }
    return readers_;
}

Result<std::shared_ptr<const TrainedStripReader::Readers>> TrainedStripReader::load() const {
    TRY_VOID(findTrainedData(folder_, languages_));
    auto readers = std::make_shared<Readers>();
    for (const std::string& language : languagesOf(languages_)) {
        const auto path = pathOf(folder_, language);
        const std::string file = TRY(readFile(path, kLargestTrainedData));
        auto model = parseLineModel(toBytes(file));
        if (!model) {
            log(fmt::format("{} is not for the built-in reader: {}", path.string(),
                            model.error().message));
            return std::make_shared<Readers>();
        }
        readers->push_back(std::make_unique<NetworkStripReader>(*std::move(model)));
    }
    if (readers->empty()) return fail("Tandrel can't read text: no language is chosen.", 500);
    return readers;
}

}  // namespace tandrel
