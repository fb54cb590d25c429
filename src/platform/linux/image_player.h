#pragma once

#include <map>

#include "platform/linux/file_stamp.h"
#include "platform/linux/image_capture_devices.h"

namespace tandrel {

// Hands one image after the other to a sink, at a fixed beat: the images of a folder in the order
// of their names, again from the start after the last, or one file again and again. A folder that
// changed is listed anew at the next round. An image that can't be loaded misses its turn, which is
// logged once until it loads again; where there is no image at all the player waits for one.
class ImagePlayer final : public CaptureSession {
 public:
    struct Options {
        std::filesystem::path path;
        LoadImage load;
        Duration interval{};
        FrameSink sink;
    };
    // Loads the first image on the caller's thread; the error names the file.
    static Result<std::unique_ptr<CaptureSession>> open(Options options, Clock& clock);
    ~ImagePlayer() override;
    ImagePlayer(const ImagePlayer&) = delete;
    ImagePlayer& operator=(const ImagePlayer&) = delete;

    static constexpr Duration kShortestInterval = std::chrono::milliseconds(5);
    static constexpr std::size_t kMostFiles = 10'000;
    // Loaded images are kept up to this much together; beyond it they are loaded at every showing.
    static constexpr std::size_t kMostBytesKept = 256 * 1024 * 1024;

 private:
    struct Loaded {
        FileStamp stamp;
        PixelBuffer image;  // none: not kept
        bool failed = false;
    };

    ImagePlayer(Options options, Clock& clock);
    Result<void> loadFirst() RUNS_ON(queue_);
    void showNext() RUNS_ON(queue_);
    void startRound() RUNS_ON(queue_);
    Result<PixelBuffer> imageOf(const std::filesystem::path& file) RUNS_ON(queue_);
    bool hasRoomFor(const PixelBuffer& image) const RUNS_ON(queue_);

    const Options options_;
    Clock& clock_;
    TimePoint due_ OWNED_BY(queue_);
    FileStamp listed_ OWNED_BY(queue_);  // of the path when `files_` was listed
    std::vector<std::filesystem::path> files_ OWNED_BY(queue_);
    std::size_t next_ OWNED_BY(queue_) = 0;
    std::map<std::filesystem::path, Loaded> loaded_ OWNED_BY(queue_);
    SerialQueue queue_;
};

}  // namespace tandrel
