#include "platform/linux/x_image.h"

#include <atomic>
#include <utility>

#include <sys/mman.h>
#include <unistd.h>
#include <xcb/shm.h>

#include "base/file_descriptor.h"

namespace tandrel {

// Memory that the server knows by `id`. Unmapped by the last holder, the server's side by the
// source or with the connection.
struct XImageSource::Segment {
    xcb_shm_seg_t id = 0;
    std::uint8_t* memory = nullptr;
    std::size_t size = 0;

    Segment() = default;
    ~Segment() {
        if (memory != nullptr) ::munmap(memory, size);
    }
    Segment(const Segment&) = delete;
    Segment& operator=(const Segment&) = delete;
};

XImageSource::XImageSource(const XConnection& x, Transfer transfer)
    : x_(x), isShared_(transfer == Transfer::shared && x.has(xcb_shm_id)) {
    if (!isShared_) return;
    const auto version =
        xReply(xcb_shm_query_version_reply(x_.get(), xcb_shm_query_version(x_.get()), nullptr));
    // Memory is handed over as a file descriptor from 1.2 on.
    isShared_ = version && std::pair(version->major_version, version->minor_version) >=
                               std::pair<std::uint16_t, std::uint16_t>(1, 2);
}

XImageSource::~XImageSource() {
    for (const auto& segment : segments_) xcb_shm_detach(x_.get(), segment->id);
    xcb_flush(x_.get());
}

PixelBuffer XImageSource::fetch(xcb_drawable_t drawable, int width, int height) {
    const std::size_t size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
    if (!isShared_) return fetchPlain(drawable, width, height);
    const auto segment = freeSegment(size);
    if (!segment) {
        return isShared_ ? PixelBuffer() : fetchPlain(drawable, width, height);
    }
    const auto reply = xReply(xcb_shm_get_image_reply(
        x_.get(),
        xcb_shm_get_image(x_.get(), drawable, 0, 0, static_cast<std::uint16_t>(width),
                          static_cast<std::uint16_t>(height), ~0U, XCB_IMAGE_FORMAT_Z_PIXMAP,
                          segment->id, 0),
        nullptr));
    if (!reply || reply->size < size) return {};
    return PixelBuffer::adopt(width, height, width * 4, segment->memory, segment);
}

// Only the source itself holds a segment that no frame uses.
std::shared_ptr<XImageSource::Segment> XImageSource::freeSegment(std::size_t size) {
    for (auto segment = segments_.begin(); segment != segments_.end();) {
        if (segment->use_count() > 1) {
            ++segment;
            continue;
        }
        // What the last holder read of it comes before what the server writes next.
        std::atomic_thread_fence(std::memory_order_acquire);
        if ((*segment)->size >= size && (*segment)->size / 2 <= size) {
            return *segment;
        } else {
            dropSegment(**segment);
            segment = segments_.erase(segment);
        }
    }
    if (segments_.size() >= kMostFrames) return nullptr;
    auto segment = makeSegment(size);
    if (segment) segments_.push_back(segment);
    return segment;
}

void XImageSource::dropSegment(const Segment& segment) { xcb_shm_detach(x_.get(), segment.id); }

std::shared_ptr<XImageSource::Segment> XImageSource::makeSegment(std::size_t size) {
    const FileDescriptor file(::memfd_create("tandrel-window", MFD_CLOEXEC));
    if (!file || ::ftruncate(file.get(), static_cast<off_t>(size)) != 0) return nullptr;
    void* memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    if (memory == MAP_FAILED) return nullptr;
    auto segment = std::make_shared<Segment>();
    segment->memory = static_cast<std::uint8_t*>(memory);
    segment->size = size;
    segment->id = xcb_generate_id(x_.get());
    // xcb sends, and closes, a descriptor of its own.
    const auto refusal = xReply(xcb_request_check(
        x_.get(), xcb_shm_attach_fd_checked(x_.get(), segment->id, ::dup(file.get()), 0)));
    if (!refusal) return segment;
    isShared_ = false;  // a server elsewhere, which shares no memory
    return nullptr;
}

PixelBuffer XImageSource::fetchPlain(xcb_drawable_t drawable, int width, int height) const {
    std::shared_ptr<xcb_get_image_reply_t> reply(
        xcb_get_image_reply(x_.get(),
                            xcb_get_image(x_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, 0, 0,
                                          static_cast<std::uint16_t>(width),
                                          static_cast<std::uint16_t>(height), ~0U),
                            nullptr),
        &std::free);
    const std::int64_t size = std::int64_t{4} * width * height;
    if (!reply || xcb_get_image_data_length(reply.get()) < size) return {};
    const std::uint8_t* pixels = xcb_get_image_data(reply.get());
    return PixelBuffer::adopt(width, height, width * 4, pixels, std::move(reply));
}

}  // namespace tandrel
