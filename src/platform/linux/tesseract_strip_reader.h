#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/mutex.h"
#include "reading/strip_reader.h"

namespace tesseract {
class TessBaseAPI;
}

namespace tandrel {

// Reads strips with libtesseract, one raw line each. An instance of the library serves one thread
// at a time; as many are made as threads read at once, and kept.
class TesseractStripReader : public StripReader {
 public:
    // `folder` holds the *.traineddata files; `languages` is "eng" or several joined by "+".
    TesseractStripReader(std::string folder, std::string languages);
    ~TesseractStripReader() override;

    Result<std::vector<StripText>> read(std::span<const Strip> strips) override;

 private:
    using Api = std::unique_ptr<tesseract::TessBaseAPI>;
    Result<Api> take();
    void giveBack(Api api);

    const std::string folder_;
    const std::string languages_;
    Mutex mutex_;
    std::vector<Api> idle_ OWNED_BY(mutex_);
};

}  // namespace tandrel
