#include "image/image_reader.h"

// Any bytes as an image file: a whole picture or an error.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // A picture's size is only a number in its head, and memory for it is not what is looked for.
    constexpr std::int64_t kMostPixels = 4'000'000;
    const auto big = [&](std::size_t at) {
        return at + 4 > size
                   ? 0
                   : (data[at] << 24 | data[at + 1] << 16 | data[at + 2] << 8 | data[at + 3]);
    };
    if (size > 24 && data[0] == 0x89 && std::int64_t(big(16)) * big(20) > kMostPixels) return 0;
    const auto image = tandrel::decodeImage({data, size});
    if (!image) return image.error().message.empty() ? __builtin_trap(), 0 : 0;
    // Reading the last pixel shows a buffer that is too small.
    volatile std::uint8_t last = image->row(image->height() - 1)[4 * image->width() - 1];
    if (last != 255) __builtin_trap();
    return 0;
}
