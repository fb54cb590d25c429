#include "reading/gray_frame.h"

#include "reading/kernels.h"

namespace tandrel {

GrayFrame GrayFrame::from(const PixelBuffer& image) {
    GrayFrame gray(image.width(), image.height());
    gray.update(image, ChangedRows::all(image.height()));
    return gray;
}

void GrayFrame::update(const PixelBuffer& image, const ChangedRows& changed) {
    const Kernels& kernels = *availableKernels().front();
    for (int y = 0; y < height_; ++y) {
        if (changed.at(y)) kernels.toGray(image.row(y), width_, row(y));
    }
}

}  // namespace tandrel
