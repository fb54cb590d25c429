#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>

#include "base/pixel_buffer.h"
#include "base/result.h"

namespace tandrel {

// Larger files and pictures are refused before they are decoded.
inline constexpr std::size_t kLargestImageFileBytes = 256 * 1024 * 1024;
inline constexpr std::int64_t kLargestImagePixels = 100'000'000;

// The picture of a PNG or JPEG file, told apart by content. Transparent pixels come as drawn on
// black; of an animated PNG the still image counts. A damaged file is an error, never half a
// picture, and so is a JPEG in the colours of print (CMYK). Any thread.
Result<PixelBuffer> decodeImage(std::span<const std::uint8_t> bytes);

// The same for a file; the error names it.
Result<PixelBuffer> readImage(const std::filesystem::path& path);

}  // namespace tandrel
