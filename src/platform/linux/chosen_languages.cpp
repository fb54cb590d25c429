#include "platform/linux/chosen_languages.h"

#include <algorithm>
#include <filesystem>

#include <fmt/format.h>

#include "base/log.h"
#include "reading/trained_strip_reader.h"

namespace tandrel {

namespace {

constexpr const char* kEnglish = "eng";
// Each language more costs as much time again.
constexpr std::ptrdiff_t kMostLanguages = 4;

bool isLanguage(std::string_view name) {
    auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || c == '_'; };
    return name.size() >= 3 && name.size() <= 16 && name.front() != '_' &&
           std::ranges::all_of(name, isLetter);
}

}  // namespace

bool areLanguages(std::string_view text) {
    if (std::ranges::count(text, '+') >= kMostLanguages) return false;
    for (std::size_t end; (end = text.find('+')) != std::string_view::npos;) {
        if (!isLanguage(text.substr(0, end))) return false;
        text.remove_prefix(end + 1);
    }
    return isLanguage(text);
}

Result<void> checkLanguages(const std::string& languages) {
    if (!areLanguages(languages)) {
        return fail(fmt::format("\"{}\" names no languages: write for instance eng or eng+deu.",
                                languages));
    }
    return findTrainedData(trainedDataFolder(), languages);
}

ChosenLanguages::ChosenLanguages(std::function<std::string()> chosen)
    : chosen_(std::move(chosen)) {}

Result<ReadText> ChosenLanguages::read(const PixelBuffer& image) {
    const auto recognizer = TRY(this->recognizer());
    return recognizer->read(image);
}

Result<std::shared_ptr<TextRecognizer>> ChosenLanguages::recognizer() {
    std::string languages = chosen_();
    MutexLock lock(mutex_);
    if (recognizer_ && languages == languages_) return recognizer_;
    const bool known = areLanguages(languages);
    if (!known) log(fmt::format("\"{}\" names no languages; text is read as English.", languages));
    // Reads that are under way keep the old one.
    recognizer_ = TRY(makeTextRecognizerWith({.languages = known ? languages : kEnglish}));
    languages_ = std::move(languages);
    return recognizer_;
}

}  // namespace tandrel
