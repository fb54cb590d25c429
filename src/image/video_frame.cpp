#include "image/video_frame.h"

#include <algorithm>
#include <memory>
#include <type_traits>
#include <vector>

#include <fmt/format.h>
#include <libyuv.h>
#include <turbojpeg.h>

namespace tandrel {
namespace {

using Layout = VideoForm::Layout;
using Input = std::span<const std::uint8_t>;

std::size_t rowBytes(const VideoForm& form) {
    const auto width = static_cast<std::size_t>(form.width);
    switch (form.layout) {
        case Layout::yuyv:
            return (width + 1) / 2 * 4;
        case Layout::nv12:
            return (width + 1) / 2 * 2;
        case Layout::bgr:
            return width * 3;
        case Layout::mjpeg:
            break;
    }
    return 0;
}

Result<void> checkSides(int width, int height) {
    const bool isPicture = width > 0 && height > 0;
    if (isPicture && std::max(width, height) <= VideoForm::kLargestSide) return {};
    return fail(fmt::format("the grabber sent a picture of {} x {} pixels", width, height));
}

// Many cameras leave bytes between the picture's end and the end mark, which is told as a warning.
// It comes last, so whatever else is wrong with the file was told first.
bool isHarmless(std::string_view warning) {
    return warning.ends_with("extraneous bytes before marker 0xd9");
}

// Without the head's tables the decoder takes those that motion JPEG goes without.
Result<PixelBuffer> decodeMjpeg(Input bytes) {
    const std::unique_ptr<std::remove_pointer_t<tjhandle>, decltype(&tjDestroy)> decoder(
        tjInitDecompress(), &tjDestroy);
    if (!decoder) return fail("JPEG: no decoder");
    const auto error = [&] {
        return fail(
            fmt::format("the grabber sent a damaged frame: {}", tjGetErrorStr2(decoder.get())));
    };
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colours = 0;
    if (bytes.empty() || tjDecompressHeader3(decoder.get(), bytes.data(), bytes.size(), &width,
                                             &height, &subsampling, &colours) != 0) {
        return error();
    }
    if (colours == TJCS_CMYK || colours == TJCS_YCCK) {
        return fail("the grabber sent a frame in the colours of print");
    }
    TRY_VOID(checkSides(width, height));
    bool isWhole = false;
    PixelBuffer picture = PixelBuffer::make(width, height, [&](std::uint8_t* pixels, int stride) {
        isWhole = tjDecompress2(decoder.get(), bytes.data(), bytes.size(), pixels, width, stride,
                                height, TJPF_BGRA, TJFLAG_LIMITSCANS) == 0;
    });
    if (isWhole || (tjGetErrorCode(decoder.get()) == TJERR_WARNING &&
                    isHarmless(tjGetErrorStr2(decoder.get())))) {
        return picture;
    }
    return error();
}

// libyuv reads these pairs directly in the older colours alone.
void convertYuyv709(const VideoForm& form, const std::uint8_t* from, std::uint8_t* pixels,
                    int stride) {
    const int half = (form.width + 1) / 2;
    const auto area = static_cast<std::size_t>(form.height) * static_cast<std::size_t>(half);
    std::vector<std::uint8_t> planes(4 * area);
    std::uint8_t* y = planes.data();
    std::uint8_t* u = y + 2 * area;
    std::uint8_t* v = u + area;
    libyuv::YUY2ToI422(from, form.strideBytes, y, 2 * half, u, half, v, half, form.width,
                       form.height);
    libyuv::I422ToARGBMatrix(y, 2 * half, u, half, v, half, pixels, stride,
                             &libyuv::kYuvH709Constants, form.width, form.height);
}

void convert(const VideoForm& form, const std::uint8_t* from, std::uint8_t* pixels, int stride) {
    const bool is709 = form.colours == VideoForm::Colours::bt709;
    const auto* matrix = is709 ? &libyuv::kYuvH709Constants : &libyuv::kYuvI601Constants;
    const std::uint8_t* pairs = from + static_cast<std::ptrdiff_t>(form.strideBytes) * form.height;
    switch (form.layout) {
        case Layout::yuyv:
            if (is709) return convertYuyv709(form, from, pixels, stride);
            libyuv::YUY2ToARGB(from, form.strideBytes, pixels, stride, form.width, form.height);
            break;
        case Layout::nv12:
            libyuv::NV12ToARGBMatrix(from, form.strideBytes, pairs, form.strideBytes, pixels,
                                     stride, matrix, form.width, form.height);
            break;
        case Layout::bgr:
            libyuv::RGB24ToARGB(from, form.strideBytes, pixels, stride, form.width, form.height);
            break;
        case Layout::mjpeg:
            break;
    }
}

}  // namespace

std::string_view word(Layout layout) {
    constexpr std::string_view kWords[] = {"YUYV", "NV12", "BGR", "MJPEG"};
    return kWords[static_cast<int>(layout)];
}

VideoForm VideoForm::withStride(std::uint32_t named) const {
    constexpr std::size_t kMostTimes = 4;  // some drivers name the bytes of the whole frame
    VideoForm form = *this;
    const std::size_t least = rowBytes(*this);
    const bool isMeant = named >= least && named <= kMostTimes * least;
    form.strideBytes = static_cast<int>(isMeant ? named : least);
    return form;
}

std::size_t VideoForm::frameBytes() const {
    const std::size_t last = rowBytes(*this);
    if (last == 0 || height <= 0) return 0;
    const int colourRows = layout == Layout::nv12 ? (height + 1) / 2 : 0;
    return static_cast<std::size_t>(strideBytes) *
               static_cast<std::size_t>(height + colourRows - 1) +
           last;
}

Result<PixelBuffer> pictureOf(const VideoForm& form, Input bytes) {
    if (form.layout == Layout::mjpeg) return decodeMjpeg(bytes);
    TRY_VOID(checkSides(form.width, form.height));
    if (form.strideBytes < 0 || static_cast<std::size_t>(form.strideBytes) < rowBytes(form)) {
        return fail(
            fmt::format("rows of {} bytes hold no {} pixels", form.strideBytes, form.width));
    }
    if (bytes.size() < form.frameBytes()) {
        return fail(fmt::format("the grabber sent a frame of {} bytes, where {} x {} takes {}",
                                bytes.size(), form.width, form.height, form.frameBytes()));
    }
    return PixelBuffer::make(form.width, form.height, [&](std::uint8_t* pixels, int stride) {
        convert(form, bytes.data(), pixels, stride);
    });
}

}  // namespace tandrel
