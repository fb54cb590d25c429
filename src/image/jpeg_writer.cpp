#include "image/jpeg_writer.h"

#include <memory>
#include <type_traits>

#include <turbojpeg.h>

namespace tandrel {
namespace {

using Encoder = std::unique_ptr<std::remove_pointer_t<tjhandle>, decltype(&tjDestroy)>;
using Output = std::unique_ptr<unsigned char, decltype(&tjFree)>;

}  // namespace

std::optional<Bytes> encodeJpeg(const Pixels& pixels, int quality) {
    if (pixels.w < 1 || pixels.h < 1) return std::nullopt;
    const Encoder encoder(tjInitCompress(), &tjDestroy);
    if (!encoder) return std::nullopt;
    unsigned char* data = nullptr;
    unsigned long size = 0;
    const int status = tjCompress2(encoder.get(), pixels.base, pixels.w, pixels.rowBytes, pixels.h,
                                   TJPF_BGRX, &data, &size, TJSAMP_420, quality, 0);
    const Output output(data, &tjFree);
    if (status != 0) return std::nullopt;
    return Bytes(output.get(), output.get() + size);
}

}  // namespace tandrel
