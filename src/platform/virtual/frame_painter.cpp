#include "platform/virtual/frame_painter.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

#include "platform/virtual/drawing.h"

namespace tandrel {
namespace {

// A drawing context in points on pixels that outlive it.
class Canvas {
 public:
    Canvas(std::uint8_t* pixels, int width, int height, double scale)
        : surface_(cairo_image_surface_create_for_data(pixels, CAIRO_FORMAT_RGB24, width, height,
                                                       width * PixelBuffer::kBytesPerPixel)),
          cairo_(cairo_create(surface_.get())) {
        cairo_scale(cairo_.get(), scale, scale);
    }

    cairo_t* get() { return cairo_.get(); }

 private:
    struct Destroy {
        void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
        void operator()(cairo_t* cairo) const { cairo_destroy(cairo); }
    };
    std::unique_ptr<cairo_surface_t, Destroy> surface_;
    std::unique_ptr<cairo_t, Destroy> cairo_;
};

}  // namespace

PixelBuffer blackFrame(int width, int height) { return PixelBuffer::make(width, height, {}); }

void FramePainter::paintScreen(const PhoneModel::Look& look) {
    width_ = static_cast<int>(std::lround(look.width * scale_));
    height_ = static_cast<int>(std::lround(look.height * scale_));
    screen_.resize(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) *
                   PixelBuffer::kBytesPerPixel);
    if (look.display == nullptr) {
        std::ranges::fill(screen_, 0);
        return;
    }
    Canvas canvas(screen_.data(), width_, height_, scale_);
    drawDisplayList(canvas.get(), fonts_, *look.display, look.width, look.height, look.scroll);
}

PixelBuffer FramePainter::paintPointer(const PhoneModel::Look& look) {
    const auto pixels = pool_.take(screen_.size());
    std::memcpy(pixels.get(), screen_.data(), screen_.size());
    if (look.pointer) {
        Canvas canvas(pixels.get(), width_, height_, scale_);
        drawPointer(canvas.get(), *look.pointer);
    }
    return PixelBuffer::adopt(width_, height_, width_ * PixelBuffer::kBytesPerPixel, pixels.get(),
                              pixels);
}

PixelBuffer FramePainter::paint(PhoneModel& model) {
    const bool screenIsNew = screenRevision_ != model.screenRevision();
    if (!screenIsNew && pointerRevision_ == model.pointerRevision()) return latest_;
    const auto look = model.look();
    if (screenIsNew) paintScreen(look);
    latest_ = paintPointer(look);
    screenRevision_ = model.screenRevision();
    pointerRevision_ = model.pointerRevision();
    return latest_;
}

}  // namespace tandrel
