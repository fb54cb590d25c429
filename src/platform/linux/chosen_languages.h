#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "base/mutex.h"
#include "platform/linux/linux_text_recognizer.h"

namespace tandrel {

// Whether the text names languages the way TextRecognizerOptions has them, such as "eng" or
// "eng+deu": at most four, no word of it a path.
bool areLanguages(std::string_view text);

// Why text can't be read in these languages: they are none, or a file of theirs is not installed.
Result<void> checkLanguages(const std::string& languages);

// Reads text in the languages that are chosen at the moment, asked for at each read.
class ChosenLanguages : public TextRecognizer {
 public:
    // `chosen` may be called on any thread; what is no list of languages counts as English.
    explicit ChosenLanguages(std::function<std::string()> chosen);

    Result<ReadText> read(const PixelBuffer& image) override;

 private:
    Result<std::shared_ptr<TextRecognizer>> recognizer();

    const std::function<std::string()> chosen_;
    Mutex mutex_;
    std::string languages_ OWNED_BY(mutex_);
    std::shared_ptr<TextRecognizer> recognizer_ OWNED_BY(mutex_);
};

}  // namespace tandrel
