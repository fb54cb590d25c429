#include "image/image_reader.h"

#include <algorithm>
#include <memory>
#include <string>
#include <type_traits>

#include <fmt/format.h>
#include <png.h>
#include <turbojpeg.h>

#include "base/file.h"

namespace tandrel {
namespace {

using Input = std::span<const std::uint8_t>;

Result<void> checkSize(std::int64_t width, std::int64_t height) {
    if (width < 1 || height < 1) return fail("the picture is empty");
    if (std::max(width, height) > PixelBuffer::kLargestSide ||
        width * height > kLargestImagePixels) {
        return fail(fmt::format("{}x{} pixels are too many", width, height));
    }
    return {};
}

// Draws every pixel on black by its alpha, which is then whole.
void flatten(std::uint8_t* pixels, std::size_t count) {
    for (std::uint8_t* p = pixels; p != pixels + 4 * count; p += 4) {
        if (p[3] == 255) continue;
        for (int c = 0; c < 3; ++c) p[c] = static_cast<std::uint8_t>((p[c] * p[3] + 127) / 255);
        p[3] = 255;
    }
}

// libpng's reader for whole pictures, which turns every depth, palette and interlacing into one
// layout and keeps libpng's long jumps to itself.
class PngImage {
 public:
    PngImage() { image_.version = PNG_IMAGE_VERSION; }
    ~PngImage() { png_image_free(&image_); }
    PngImage(const PngImage&) = delete;
    PngImage& operator=(const PngImage&) = delete;

    Result<PixelBuffer> decode(Input bytes) {
        if (!png_image_begin_read_from_memory(&image_, bytes.data(), bytes.size())) return error();
        TRY_VOID(checkSize(image_.width, image_.height));
        image_.format = PNG_FORMAT_BGRA;
        // Of 16 bits without a word on brightness libpng would think that they are linear.
        image_.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
        bool complete = false;
        PixelBuffer buffer = PixelBuffer::make(
            static_cast<int>(image_.width), static_cast<int>(image_.height),
            [&](std::uint8_t* pixels, int rowBytes) {
                complete = png_image_finish_read(&image_, nullptr, pixels, rowBytes, nullptr) != 0;
                flatten(pixels, static_cast<std::size_t>(image_.width) * image_.height);
            });
        if (!complete) return error();
        return buffer;
    }

 private:
    std::unexpected<Error> error() const { return fail(fmt::format("PNG: {}", image_.message)); }

    png_image image_{};
};

Result<PixelBuffer> decodeJpeg(Input bytes) {
    // A warning means damage, and a picture of hundreds of scans is made to waste time.
    constexpr int kStrict = TJFLAG_STOPONWARNING | TJFLAG_LIMITSCANS;
    const std::unique_ptr<std::remove_pointer_t<tjhandle>, decltype(&tjDestroy)> decoder(
        tjInitDecompress(), &tjDestroy);
    if (!decoder) return fail("JPEG: no decoder");
    const auto error = [&] { return fail(fmt::format("JPEG: {}", tjGetErrorStr2(decoder.get()))); };
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colours = 0;
    if (tjDecompressHeader3(decoder.get(), bytes.data(), bytes.size(), &width, &height,
                            &subsampling, &colours) != 0) {
        return error();
    }
    if (colours == TJCS_CMYK || colours == TJCS_YCCK) {
        return fail("JPEG: colours for print (CMYK) are not supported");
    }
    TRY_VOID(checkSize(width, height));
    bool complete = false;
    PixelBuffer buffer = PixelBuffer::make(width, height, [&](std::uint8_t* pixels, int rowBytes) {
        complete = tjDecompress2(decoder.get(), bytes.data(), bytes.size(), pixels, width, rowBytes,
                                 height, TJPF_BGRA, kStrict) == 0;
    });
    if (!complete) return error();
    return buffer;
}

bool beginsWith(Input bytes, std::initializer_list<std::uint8_t> signature) {
    return bytes.size() >= signature.size() &&
           std::equal(signature.begin(), signature.end(), bytes.begin());
}

}  // namespace

Result<PixelBuffer> decodeImage(Input bytes) {
    if (beginsWith(bytes, {0x89, 'P', 'N', 'G'})) return PngImage().decode(bytes);
    if (beginsWith(bytes, {0xff, 0xd8, 0xff})) return decodeJpeg(bytes);
    return fail("it is neither a PNG nor a JPEG picture");
}

Result<PixelBuffer> readImage(const std::filesystem::path& path) {
    const std::string content = TRY(readFile(path, kLargestImageFileBytes));
    auto image =
        decodeImage({reinterpret_cast<const std::uint8_t*>(content.data()), content.size()});
    if (!image) return fail(fmt::format("can't read {}: {}", path.string(), image.error().message));
    return image;
}

}  // namespace tandrel
