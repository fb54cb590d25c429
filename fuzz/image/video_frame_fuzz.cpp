#include <vector>

#include "image/video_frame.h"

// Any bytes as a grabber's frame, whose form the first ten bytes name as a driver would.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using tandrel::VideoForm;
    constexpr std::size_t kHead = 10;
    constexpr int kMostSide = 1023;  // memory for large ones is not what is looked for
    if (size < kHead) return 0;
    const auto at = [&](std::size_t i) { return data[i] | data[i + 1] << 8; };
    VideoForm form{
        .layout = static_cast<VideoForm::Layout>(data[0] & 3),
        .width = at(2) & kMostSide,
        .height = at(4) & kMostSide,
        .colours = (data[1] & 1) != 0 ? VideoForm::Colours::bt709 : VideoForm::Colours::bt601};
    form = form.withStride(static_cast<std::uint32_t>(at(6) | at(8) << 16));
    // A copy of its own, so that reading past its end shows.
    std::vector<std::uint8_t> frame(data + kHead, data + size);
    if (form.layout != VideoForm::Layout::mjpeg && form.frameBytes() < 1'000'000 &&
        (data[1] & 2) != 0) {
        frame.resize(form.frameBytes());
    }
    const auto picture = tandrel::pictureOf(form, frame);
    if (!picture) return picture.error().message.empty() ? __builtin_trap(), 0 : 0;
    // Reading the last pixel shows a buffer that is too small.
    volatile std::uint8_t last = picture->row(picture->height() - 1)[4 * picture->width() - 1];
    if (last != 255) __builtin_trap();
    return 0;
}
