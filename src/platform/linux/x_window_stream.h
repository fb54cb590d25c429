#pragma once

#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>

#include "base/clock.h"
#include "base/file_descriptor.h"
#include "platform/linux/x_connection.h"
#include "platform/linux/x_image.h"
#include "platform/windows.h"

namespace tandrel {

// The picture of one X window, covered or off the screen: the server keeps the window's content
// apart (Composite), tells when it was drawn on (Damage), and the content is then fetched. A window
// that the window manager unmapped, minimised or on another desktop, has no content.
class XWindowStream final : public WindowStream {
 public:
    // Frames come no closer than this.
    static constexpr Duration kShortestInterval = std::chrono::microseconds(16'667);

    using Transfer = XImageSource::Transfer;
    static Result<std::unique_ptr<WindowStream>> open(std::uint32_t id, WindowEvents events,
                                                      Transfer transfer = Transfer::shared);
    ~XWindowStream() override;
    XWindowStream(const XWindowStream&) = delete;
    XWindowStream& operator=(const XWindowStream&) = delete;

 private:
    XWindowStream(std::unique_ptr<XConnection> x, std::uint32_t id, WindowEvents events,
                  FileDescriptor wake, Transfer transfer);

    Result<void> follow();
    void run(const std::stop_token& stop);
    void await(bool isForFrame);
    // False once the window is gone.
    bool takeEvents();
    bool takeEvent(const xcb_generic_event_t& event);
    void takeFrame();
    bool nameContent();
    void tellHidden();

    const std::unique_ptr<XConnection> x_;
    const std::uint32_t id_;
    const WindowEvents events_;
    const FileDescriptor wake_;
    XImageSource images_;

    // The thread's own.
    std::uint8_t damageEvent_ = 0;
    std::uint32_t damage_ = 0;
    xcb_pixmap_t content_ = XCB_NONE;
    int width_ = 0;  // of the content
    int height_ = 0;
    bool isStale_ = true;    // the window has other content than `content_` names
    bool isVisible_ = true;  // as far as the server said
    bool isDrawn_ = true;    // there may be a new picture
    TimePoint nextFrame_;
    std::jthread thread_;
};

}  // namespace tandrel
