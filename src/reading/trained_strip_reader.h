#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/mutex.h"
#include "reading/strip_reader.h"

namespace tandrel {

// Whether `folder` holds the traineddata files of `languages`, names joined by "+"; the error says
// what to install.
Result<void> findTrainedData(const std::string& folder, const std::string& languages);

// Reads strips with the traineddata files of one or several languages, loaded at the first read. A
// file of a kind that our own network cannot run has its strips read by the fallback instead, which
// is logged once.
class TrainedStripReader : public StripReader {
 public:
    // `languages` are names of files in `folder`, joined by "+"; `fallback` reads the same ones.
    TrainedStripReader(std::string folder, std::string languages,
                       std::unique_ptr<StripReader> fallback);
    ~TrainedStripReader() override;

    Result<std::vector<StripText>> read(std::span<const Strip> strips) override;

 private:
    using Readers = std::vector<std::unique_ptr<StripReader>>;
    // One reader for each language; none if the fallback is to read.
    Result<std::shared_ptr<const Readers>> readers();
    Result<std::shared_ptr<const Readers>> load() const;

    const std::string folder_;
    const std::string languages_;
    const std::unique_ptr<StripReader> fallback_;
    Mutex mutex_;
    std::shared_ptr<const Readers> readers_ OWNED_BY(mutex_);
};

}  // namespace tandrel
