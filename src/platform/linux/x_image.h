#pragma once

#include <memory>
#include <vector>

#include "base/pixel_buffer.h"
#include "platform/linux/x_connection.h"

namespace tandrel {

// Fetches pictures from the X server. The server writes them into memory that both share, where it
// can, so that a frame is copied once and by the server; a frame's memory is used again when its
// last holder let go. One thread.
class XImageSource {
 public:
    // Frames that are still held when this many more come are waited for by dropping new ones.
    static constexpr std::size_t kMostFrames = 8;

    enum class Transfer { shared, plain };
    // `x` outlives the source; frames may outlive both.
    explicit XImageSource(const XConnection& x, Transfer transfer = Transfer::shared);
    ~XImageSource();
    XImageSource(const XImageSource&) = delete;
    XImageSource& operator=(const XImageSource&) = delete;

    // The drawable's pixels, which are 32 bits each; nothing when it is gone or every frame's
    // memory is still held.
    PixelBuffer fetch(xcb_drawable_t drawable, int width, int height);

    bool isShared() const { return isShared_; }

 private:
    struct Segment;
    std::shared_ptr<Segment> freeSegment(std::size_t size);
    std::shared_ptr<Segment> makeSegment(std::size_t size);
    void dropSegment(const Segment& segment);
    PixelBuffer fetchPlain(xcb_drawable_t drawable, int width, int height) const;

    const XConnection& x_;
    bool isShared_;
    std::vector<std::shared_ptr<Segment>> segments_;
};

}  // namespace tandrel
