#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "base/frame_pool.h"
#include "base/pixel_buffer.h"
#include "base/result.h"

// Raw video as GStreamer's "gdppay" frames it: messages of a 62-byte head and a payload, which is
// the stream's caps, a frame or an event.
//
//   byte  0      version, 1
//         4..5   what the payload is: 1 a frame, 2 caps, 64 and up an event   (big-endian)
//         6..9   its length                                                   (big-endian)
//        10..61  times, offsets and checksums, which are not needed
namespace tandrel {

// The form of frames, from the caps text.
struct RawVideoForm {
    static constexpr int kLargestSide = 8192;
    static constexpr int kMostPixels = 4096 * 4096;  // twice what a receiver is asked for

    int width = 0;
    int height = 0;
    enum class Colours { bt601, bt709 } colours = Colours::bt601;

    // The error says what is not understood about it.
    static Result<RawVideoForm> parse(std::string_view caps);

    // I420: a plane of brightness and two of colour, a quarter of its size each. Rows are padded to
    // four bytes, the first plane to an even number of rows.
    std::size_t lumaStride() const { return padded(width); }
    std::size_t chromaStride() const { return padded((width + 1) / 2); }
    std::size_t lumaRows() const { return static_cast<std::size_t>((height + 1) & ~1); }
    std::size_t frameBytes() const { return (lumaStride() + chromaStride()) * lumaRows(); }

    bool operator==(const RawVideoForm&) const = default;

 private:
    static std::size_t padded(int bytes) { return static_cast<std::size_t>((bytes + 3) & ~3); }
};

// Reads such a stream from bytes in pieces of any size. One thread.
class GdpReader {
 public:
    GdpReader();

    // Where the next bytes of the stream belong; never empty.
    std::span<std::uint8_t> space();
    // What the first `count` bytes of that space, just written, completed, if anything. After an
    // error the stream makes no sense any more.
    struct Event {
        PixelBuffer frame;  // empty: a new form was told
        RawVideoForm form;
    };
    Result<std::optional<Event>> take(std::size_t count);
    // Whether a message has begun and not ended.
    bool isMidMessage() const { return !isHead_ || filled_ > 0; }

 private:
    enum class Payload { frame, caps, other };
    Result<void> readHead();
    Result<std::optional<Event>> readPayload();
    void expectHead();
    PixelBuffer picture();

    std::vector<std::uint8_t> bytes_;
    std::size_t wanted_ = 0;
    std::size_t filled_ = 0;
    bool isHead_ = true;
    Payload payload_ = Payload::other;
    std::optional<RawVideoForm> form_;
    FramePool pool_;
};

}  // namespace tandrel
