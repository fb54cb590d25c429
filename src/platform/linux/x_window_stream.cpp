#include "platform/linux/x_window_stream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fmt/format.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <xcb/composite.h>
#include <xcb/damage.h>

#include "base/file.h"

namespace tandrel {
namespace {

constexpr const char* kThreadName = "airplay-capture";

Result<void> checkExtensions(const XConnection& x) {
    if (!x.has(xcb_composite_id) || !x.has(xcb_damage_id)) {
        return fail("the display cannot show single windows (it lacks Composite or Damage)", 503);
    }
    const auto composite = xReply(xcb_composite_query_version_reply(
        x.get(), xcb_composite_query_version(x.get(), 0, 4), nullptr));
    const auto damage = xReply(
        xcb_damage_query_version_reply(x.get(), xcb_damage_query_version(x.get(), 1, 1), nullptr));
    if (composite && damage) return {};
    return fail("the display cannot show single windows (it refuses Composite or Damage)", 503);
}

}  // namespace

Result<std::unique_ptr<WindowStream>> XWindowStream::open(std::uint32_t id, WindowEvents events,
                                                          Transfer transfer) {
    auto x = TRY(XConnection::open());
    TRY_VOID(checkExtensions(*x));
    FileDescriptor wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!wake) return fail("cannot capture a window: " + systemError(errno), 503);
    std::unique_ptr<XWindowStream> stream(
        new XWindowStream(std::move(x), id, std::move(events), std::move(wake), transfer));
    TRY_VOID(stream->follow());
    stream->thread_ =
        std::jthread([self = stream.get()](const std::stop_token& stop) { self->run(stop); });
    return stream;
}

XWindowStream::XWindowStream(std::unique_ptr<XConnection> x, std::uint32_t id, WindowEvents events,
                             FileDescriptor wake, Transfer transfer)
    : x_(std::move(x)),
      id_(id),
      events_(std::move(events)),
      wake_(std::move(wake)),
      images_(*x_, transfer) {}

XWindowStream::~XWindowStream() {
    thread_.request_stop();
    ::eventfd_write(wake_.get(), 1);
    if (thread_.joinable()) thread_.join();
}

Result<void> XWindowStream::follow() {
    const std::uint32_t wanted = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    const auto gone =
        xReply(xcb_request_check(x_->get(), xcb_change_window_attributes_checked(
                                                x_->get(), id_, XCB_CW_EVENT_MASK, &wanted)));
    if (gone || x_->isBroken()) return std::unexpected(windowIsGone(id_));
    // Only pixels of four bytes in our order are read; every display of today has them.
    const auto size =
        xReply(xcb_get_geometry_reply(x_->get(), xcb_get_geometry(x_->get(), id_), nullptr));
    if (!size) return std::unexpected(windowIsGone(id_));
    if (size->depth != 24 && size->depth != 32) {
        return fail(
            fmt::format("cannot capture window {}: it has {} colour bits", id_, size->depth), 503);
    }
    xcb_composite_redirect_window(x_->get(), id_, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    damageEvent_ = xcb_get_extension_data(x_->get(), &xcb_damage_id)->first_event;
    damage_ = xcb_generate_id(x_->get());
    xcb_damage_create(x_->get(), damage_, id_, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    x_->sync();
    return {};
}

void XWindowStream::run(const std::stop_token& stop) {
    ::pthread_setname_np(::pthread_self(), kThreadName);
    while (!stop.stop_requested()) {
        const bool isOpen = takeEvents();
        if (x_->isBroken()) return events_.ended("the display that showed the window is gone");
        if (!isOpen) return events_.ended(windowIsGone(id_).message);
        const TimePoint now = systemClock().now();
        if (!isDrawn_ || now < nextFrame_) {
            await(isDrawn_);
            continue;
        }
        isDrawn_ = false;
        // At equal distances; what was missed altogether is not made up for.
        nextFrame_ = std::max(nextFrame_, now - kShortestInterval) + kShortestInterval;
        // Its replies may bring events, which are looked at before anything is waited for.
        takeFrame();
    }
}

// Waits for the server, for `stop`, or for the time at which the next frame may be fetched.
void XWindowStream::await(bool isForFrame) {
    xcb_flush(x_->get());
    pollfd waits[] = {{x_->descriptor(), POLLIN, 0}, {wake_.get(), POLLIN, 0}};
    timespec time{};
    if (isForFrame) {
        const auto left = std::max(nextFrame_ - systemClock().now(), Duration::zero());
        time.tv_nsec = std::min<std::int64_t>(left.count(), kShortestInterval.count());
        // Only the time counts: further drawing changes nothing about when the next frame is due.
        ::ppoll(&waits[1], 1, &time, nullptr);
        return;
    }
    ::ppoll(waits, std::size(waits), nullptr, nullptr);
}

bool XWindowStream::takeEvents() {
    while (const auto event = xReply(xcb_poll_for_event(x_->get()))) {
        if (!takeEvent(*event)) return false;
    }
    return true;
}

bool XWindowStream::takeEvent(const xcb_generic_event_t& event) {
    constexpr std::uint8_t kSentByClient = 0x80;
    const std::uint8_t type = event.response_type & ~kSentByClient;
    if (type == damageEvent_ + XCB_DAMAGE_NOTIFY) {
        isDrawn_ = true;
    } else if (type == XCB_CONFIGURE_NOTIFY) {
        isStale_ = isDrawn_ = true;
    } else if (type == XCB_MAP_NOTIFY) {
        isVisible_ = isStale_ = isDrawn_ = true;
    } else if (type == XCB_UNMAP_NOTIFY) {
        isVisible_ = false;
        tellHidden();
    } else if (type == XCB_DESTROY_NOTIFY) {
        return false;
    }
    return true;
}

void XWindowStream::tellHidden() {
    events_.hidden(fmt::format(
        "window {} is minimised or on another desktop: bring it back, it may then be covered",
        id_));
}

void XWindowStream::takeFrame() {
    if (!isVisible_) return;
    xcb_damage_subtract(x_->get(), damage_, XCB_NONE, XCB_NONE);
    if (isStale_ && !nameContent()) return;
    const PixelBuffer frame = images_.fetch(content_, width_, height_);
    if (frame) return events_.frame(frame);
    // Every frame's memory is held, or the content went: tried again with the next frame's turn.
    isStale_ = isDrawn_ = true;
}

// The window's content gets a new pixmap with each size and each mapping.
bool XWindowStream::nameContent() {
    if (content_ != XCB_NONE) xcb_free_pixmap(x_->get(), std::exchange(content_, XCB_NONE));
    const auto state = xReply(xcb_get_window_attributes_reply(
        x_->get(), xcb_get_window_attributes(x_->get(), id_), nullptr));
    if (!state) return false;
    if (state->map_state != XCB_MAP_STATE_VIEWABLE) {
        isVisible_ = false;
        tellHidden();
        return false;
    }
    const xcb_pixmap_t content = xcb_generate_id(x_->get());
    const auto refusal = xReply(xcb_request_check(
        x_->get(), xcb_composite_name_window_pixmap_checked(x_->get(), id_, content)));
    if (refusal) return false;
    // The pixmap's own size: the window may have another by now.
    const auto size =
        xReply(xcb_get_geometry_reply(x_->get(), xcb_get_geometry(x_->get(), content), nullptr));
    content_ = content;
    if (!size) return false;
    width_ = size->width;
    height_ = size->height;
    isStale_ = false;
    return true;
}

}  // namespace tandrel
