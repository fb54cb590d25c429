#include "image/image_reader.h"

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include "base/bytes.h"
#include "base/file.h"
#include "image/jpeg_writer.h"
#include "image/pictures.h"
#include "image/png_writer.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

using pictures::Colour;

// A PNG of what lies between the beginning and the end that all have.
Bytes png(std::string_view hex) {
    const std::string all =
        "89504e470d0a1a0a0000000d49484452" + std::string(hex) + "0000000049454e44ae426082";
    Bytes bytes;
    for (std::size_t i = 0; i < all.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(all.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

// Two by two or two by one pixels of the kinds of PNG that our own writer never makes.
constexpr std::string_view kPalette =
    "0000000200000002010300000048789f6700000006504c5445ff00000000ff6ca1fd8e0000000c4944415478da6370"
    "60680000014400c10487cffa";
constexpr std::string_view kInterlaced =
    "000000020000000208020000018ad3aae50000000f4944415478da63f8cf00041002080020ee05fb4c50558d";
constexpr std::string_view kOneBitGrey =
    "00000002000000010100000000dc5942270000000a4944415478da637000000042004184bf8e62";
constexpr std::string_view kHalfTransparent =
    "00000002000000010806000000f4227f8a0000000f4944415478da63389162f41f881b00145c043ca0549897";
constexpr std::string_view kTransparentGreen =
    "000000020000000108020000007b40e8dd0000000674524e53000000ff0000d03e337c0000000f4944415478da63f8"
    "cfc0c0f09f010007ff01ffb80435e0";
constexpr std::string_view k20000Square =
    "00004e2000004e2008020000006c12d16e000000084944415478da0300000000016fddc991";
constexpr std::string_view k40000Wide =
    "00009c4000000001080200000032025cd3000000084944415478da0300000000016fddc991";
constexpr std::string_view kSecondRowMissing =
    "00000002000000020802000000fdd49a730000000f4944415478da63f8cfc0c0f09f010007ff01ffb80435e0";

constexpr Colour kRed{255, 0, 0};
constexpr Colour kGreen{0, 255, 0};
constexpr Colour kBlue{0, 0, 255};

TEST(ImageReader, ReadsEveryKindOfPng) {
    using Picture = std::vector<std::vector<Colour>>;
    const std::tuple<const char*, std::string_view, Picture> rows[] = {
        {"palette", kPalette, {{kRed, kBlue}, {kBlue, kRed}}},
        {"interlaced", kInterlaced, {{kRed, kGreen}, {kBlue, pictures::kWhite}}},
        {"one bit grey", kOneBitGrey, {{pictures::kBlack, pictures::kWhite}}},
        {"alpha is drawn on black", kHalfTransparent, {{{200, 100, 50}, {100, 50, 25}}}},
        {"one colour is transparent", kTransparentGreen, {{kRed, pictures::kBlack}}},
    };
    for (const auto& [name, file, picture] : rows) {
        SCOPED_TRACE(name);
        const auto image = decodeImage(png(file));
        ASSERT_TRUE(image) << image.error().message;
        ASSERT_EQ(image->height(), int(picture.size()));
        ASSERT_EQ(image->width(), int(picture[0].size()));
        for (int y = 0; y < image->height(); ++y) {
            for (int x = 0; x < image->width(); ++x) {
                EXPECT_EQ(pictures::colourAt(*image, x, y), picture[y][x]) << x << "," << y;
                EXPECT_EQ(image->row(y)[4 * x + 3], 255);
            }
        }
    }
}

// A JPEG of a plain colour by the library's own encoder.
Bytes jpeg(TJPF format, TJSAMP subsampling, int flags) {
    const int pixelBytes = tjPixelSize[format];
    const Bytes pixels(std::size_t(40 * 30 * pixelBytes), 180);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    const tjhandle encoder = tjInitCompress();
    tjCompress2(encoder, pixels.data(), 40, 0, 30, format, &data, &size, subsampling, 90, flags);
    Bytes result(data, data + size);
    tjFree(data);
    tjDestroy(encoder);
    return result;
}

TEST(ImageReader, ReadsJpegsInScreenColours) {
    const std::pair<const char*, Bytes> rows[] = {
        {"4:2:0", jpeg(TJPF_RGB, TJSAMP_420, 0)},
        {"4:4:0", jpeg(TJPF_RGB, TJSAMP_440, 0)},
        {"grey", jpeg(TJPF_GRAY, TJSAMP_GRAY, 0)},
        {"progressive", jpeg(TJPF_RGB, TJSAMP_444, TJFLAG_PROGRESSIVE)},
    };
    for (const auto& [name, file] : rows) {
        SCOPED_TRACE(name);
        const auto image = decodeImage(file);
        ASSERT_TRUE(image) << image.error().message;
        EXPECT_EQ(pictures::sizeOf(*image), std::pair(40, 30));
        EXPECT_NEAR(pictures::colourAt(*image, 20, 15).green, 180, 2);
        EXPECT_EQ(image->row(29)[4 * 39 + 3], 255);
    }
}

TEST(ImageReader, RefusesWhatItCannotShowWhole) {
    Bytes badCheck = png(kPalette);
    badCheck[60] ^= 1;
    const std::tuple<const char*, Bytes, const char*> rows[] = {
        {"nothing", {}, "neither a PNG nor a JPEG"},
        {"text", toBytes("not a picture at all"), "neither a PNG nor a JPEG"},
        {"GIF", toBytes("GIF89a\1\0\1\0"), "neither a PNG nor a JPEG"},
        {"PNG signature alone", toBytes("\x89PNG\r\n\x1a\n"), "PNG: "},
        {"JPEG signature alone", Bytes{0xff, 0xd8, 0xff}, "the picture is empty"},
        {"too many pixels", png(k20000Square), "20000x20000 pixels are too many"},
        {"too wide", png(k40000Wide), "40000x1 pixels are too many"},
        {"rows missing", png(kSecondRowMissing), "PNG: "},
        {"damaged", badCheck, "PNG: "},
        {"print colours", jpeg(TJPF_CMYK, TJSAMP_444, 0), "CMYK"},
    };
    for (const auto& [name, file, says] : rows) {
        SCOPED_TRACE(name);
        const auto image = decodeImage(file);
        ASSERT_FALSE(image);
        EXPECT_NE(image.error().message.find(says), std::string::npos) << image.error().message;
    }
}

// A picture that was cut short in writing must not pass for the whole one. The closing marker of
// either format holds no picture, so a cut there may pass.
TEST(ImageReader, ACutPictureIsNeverHalfAPicture) {
    const PixelBuffer picture = pictures::textLike(120, 90);
    const std::tuple<const char*, Bytes, std::size_t> rows[] = {
        {"PNG", *withPixels(picture, encodePng), 20},
        {"JPEG", *withPixels(picture, [](const Pixels& p) { return encodeJpeg(p, 80); }), 8},
    };
    for (const auto& [name, file, closing] : rows) {
        for (std::size_t length = 0; length + closing < file.size(); ++length) {
            const auto image = decodeImage(std::span(file).first(length));
            EXPECT_FALSE(image) << name << " cut at " << length << " of " << file.size();
        }
    }
}

TEST(ImageFile, IsReadFromDiskAndNamedInErrors) {
    const TemporaryFolder folder;
    const PixelBuffer picture = pictures::noise(31, 17);
    const auto path = folder.path() / "screen.png";
    ASSERT_TRUE(replaceFile(path, toText(*withPixels(picture, encodePng))));
    EXPECT_TRUE(pictures::sameColours(readImage(path).value(), picture));
    const auto text = folder.path() / "notes.png";
    ASSERT_TRUE(replaceFile(text, "hello"));
    for (const auto& other : {text, folder.path() / "missing.png", folder.path()}) {
        const auto image = readImage(other);
        ASSERT_FALSE(image);
        EXPECT_NE(image.error().message.find(other.string()), std::string::npos);
    }
}

}  // namespace
}  // namespace tandrel
