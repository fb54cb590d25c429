#include <string_view>

#include "image/gdp_reader.h"

// Any text as the caps of a receiver's stream: what is taken for a form has sides that can be drawn
// and frames that fit into memory.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using tandrel::RawVideoForm;
    const auto form = RawVideoForm::parse({reinterpret_cast<const char*>(data), size});
    if (!form) return form.error().message.empty() ? __builtin_trap(), 0 : 0;
    const auto width = static_cast<std::size_t>(form->width);
    const auto height = static_cast<std::size_t>(form->height);
    constexpr std::size_t kMost = RawVideoForm::kLargestSide;
    if (width < 1 || height < 1 || width > kMost || height > kMost) __builtin_trap();
    if (width * height > RawVideoForm::kMostPixels) __builtin_trap();
    // A brightness for each pixel and a quarter of that for each of two colours, at the least.
    if (form->frameBytes() < width * height + (width * height) / 2) __builtin_trap();
    // Rows of one pixel are padded to four bytes.
    if (form->frameBytes() > 8 * std::size_t{RawVideoForm::kMostPixels}) __builtin_trap();
    return 0;
}
