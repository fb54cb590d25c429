#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "image/video_frame.h"
#include "platform/linux/video_calls.h"

namespace tandrel {

// What a node under /dev says it is.
struct VideoIdentity {
    std::string name;       // the maker's
    bool delivers = false;  // video to this program; the metadata nodes beside it do not
};
// The error names the path and says what to do about it.
Result<VideoIdentity> identifyVideo(VideoCalls& calls, const std::string& path);

// A device that delivers frames, from `open` until it is destroyed. One thread.
class VideoDevice {
 public:
    static Result<std::unique_ptr<VideoDevice>> open(VideoCalls& calls, const std::string& path);
    ~VideoDevice();
    VideoDevice(const VideoDevice&) = delete;
    VideoDevice& operator=(const VideoDevice&) = delete;

    const VideoForm& form() const { return form_; }

    // Waits for frames, for `wake` to become readable or for the time to pass, and takes the newest
    // frame; older ones are given back unseen. None: no frame came.
    struct Taken {
        PixelBuffer picture;
        std::string damage;  // what is wrong with the frame, when it gives no picture
    };
    // The error says why there will be no more frames.
    Result<std::optional<Taken>> take(int wake, Duration longest);

 private:
    struct Memory {
        std::uint8_t* first = nullptr;
        std::size_t length = 0;
    };
    struct Filled {
        std::uint32_t index = 0;
        std::size_t bytes = 0;
        bool isDamaged = false;
    };

    VideoDevice(VideoCalls& calls, int device) : calls_(calls), device_(device) {}
    Result<void> agreeOnForm(const std::string& path);
    Result<void> shareMemory();
    Result<void> begin(const std::string& path);
    Result<void> giveBack(std::uint32_t index);
    Result<std::optional<Filled>> next();
    bool hasOtherSignal();

    VideoCalls& calls_;
    const int device_;
    VideoForm form_;
    std::vector<Memory> memory_;
};

}  // namespace tandrel
