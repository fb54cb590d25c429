#include "image/image_reader.h"

#include <filesystem>
#include <memory>

#include <gtest/gtest.h>
#include <stdlib.h>
#include <turbojpeg.h>

#include "base/bytes.h"
#include "base/file.h"
#include "image/jpeg_writer.h"
#include "image/pictures.h"
#include "image/png_writer.h"

namespace tandrel {
namespace {

using pictures::Colour;

Bytes fromHex(std::string_view hex) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes.push_back(
            static_cast<std::uint8_t>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
    }
    return bytes;
}

// Two by two or two by one pixels of the kinds of PNG that our own writer never makes.
constexpr std::string_view kPalette =
    "89504e470d0a1a0a0000000d49484452000000020000000201030000004878"
    "9f6700000006504c5445ff00000000ff6ca1fd8e0000000c4944415478da637060680000014400c10487cffa000000"
    "00"
    "49454e44ae426082";
constexpr std::string_view kInterlaced =
    "89504e470d0a1a0a0000000d49484452000000020000000208020000018ad3aae50000000f4944415478da63f8cf00"
    "04"
    "1002080020ee05fb4c50558d0000000049454e44ae426082";
constexpr std::string_view kSixteenBit =
    "89504e470d0a1a0a0000000d49484452000000020000000110020000002bd0349e000000104944415478da63f8ff9f"
    "01"
    "0afeff070019f303fda00eaefe0000000049454e44ae426082";
constexpr std::string_view kOneBitGrey =
    "89504e470d0a1a0a0000000d4948445200000002000000010100000000dc5942270000000a4944415478da63700000"
    "00"
    "42004184bf8e620000000049454e44ae426082";
constexpr std::string_view kHalfTransparent =
    "89504e470d0a1a0a0000000d4948445200000002000000010806000000f4227f8a0000000f4944415478da63389162"
    "f4"
    "1f881b00145c043ca05498970000000049454e44ae426082";
constexpr std::string_view kTransparentGreen =
    "89504e470d0a1a0a0000000d49484452000000020000000108020000007b40e8dd0000000674524e53000000ff0000"
    "d0"
    "3e337c0000000f4944415478da63f8cfc0c0f09f010007ff01ffb80435e00000000049454e44ae426082";
constexpr std::string_view kAnimated =
    "89504e470d0a1a0a0000000d4948445200000001000000010802000000907753de000000086163544c000000020000"
    "00"
    "00f38d93700000001a6663544c00000000000000010000000100000000000000000001000a00005a7f30d00000000c"
    "49"
    "444154789c63f8cfc0000003010100c9fe92ef0000001a6663544c0000000100000001000000010000000000000000"
    "00"
    "01000a0000c10cda04000000106664415400000002789c636060f80f000103010068bfedf40000000049454e44ae42"
    "60"
    "82";
constexpr std::string_view kEmpty =
    "89504e470d0a1a0a0000000d4948445200000000000000020802000000f9214a4e000000084944415478da03000000"
    "00"
    "016fddc9910000000049454e44ae426082";
constexpr std::string_view k20000Square =
    "89504e470d0a1a0a0000000d4948445200004e2000004e2008020000006c12d16e000000084944415478da03000000"
    "00"
    "016fddc9910000000049454e44ae426082";
constexpr std::string_view k40000Wide =
    "89504e470d0a1a0a0000000d4948445200009c4000000001080200000032025cd3000000084944415478da03000000"
    "00"
    "016fddc9910000000049454e44ae426082";
constexpr std::string_view kSecondRowMissing =
    "89504e470d0a1a0a0000000d4948445200000002000000020802000000fdd49a730000000f4944415478da63f8cfc0"
    "c0"
    "f09f010007ff01ffb80435e00000000049454e44ae426082";

constexpr Colour kRed{255, 0, 0};
constexpr Colour kGreen{0, 255, 0};
constexpr Colour kBlue{0, 0, 255};

TEST(ImageReader, ReadsEveryKindOfPng) {
    struct Row {
        const char* name;
        std::string_view file;
        std::vector<std::vector<Colour>> rows;
    };
    const Row rows[] = {
        {"palette", kPalette, {{kRed, kBlue}, {kBlue, kRed}}},
        {"interlaced", kInterlaced, {{kRed, kGreen}, {kBlue, pictures::kWhite}}},
        {"16 bits a channel", kSixteenBit, {{kRed, kBlue}}},
        {"one bit grey", kOneBitGrey, {{pictures::kBlack, pictures::kWhite}}},
        {"alpha is drawn on black", kHalfTransparent, {{{200, 100, 50}, {100, 50, 25}}}},
        {"one colour is transparent", kTransparentGreen, {{kRed, pictures::kBlack}}},
        {"animated: the still image", kAnimated, {{kRed}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto image = decodeImage(fromHex(row.file));
        ASSERT_TRUE(image) << image.error().message;
        ASSERT_EQ(image->height(), int(row.rows.size()));
        ASSERT_EQ(image->width(), int(row.rows[0].size()));
        for (int y = 0; y < image->height(); ++y) {
            for (int x = 0; x < image->width(); ++x) {
                const Colour& expected = row.rows[std::size_t(y)][std::size_t(x)];
                EXPECT_EQ(pictures::colourAt(*image, x, y), expected) << x << "," << y;
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
    const struct {
        const char* name;
        Bytes file;
    } rows[] = {
        {"4:2:0", jpeg(TJPF_RGB, TJSAMP_420, 0)},
        {"4:4:0", jpeg(TJPF_RGB, TJSAMP_440, 0)},
        {"grey", jpeg(TJPF_GRAY, TJSAMP_GRAY, 0)},
        {"progressive", jpeg(TJPF_RGB, TJSAMP_444, TJFLAG_PROGRESSIVE)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto image = decodeImage(row.file);
        ASSERT_TRUE(image) << image.error().message;
        EXPECT_EQ(image->width(), 40);
        EXPECT_EQ(image->height(), 30);
        EXPECT_NEAR(pictures::colourAt(*image, 20, 15).green, 180, 2);
        EXPECT_EQ(image->row(29)[4 * 39 + 3], 255);
    }
}

TEST(ImageReader, RefusesWhatItCannotShowWhole) {
    Bytes badCheck = fromHex(kPalette);
    badCheck[60] ^= 1;
    const struct {
        const char* name;
        Bytes file;
        const char* says;
    } rows[] = {
        {"nothing", {}, "neither a PNG nor a JPEG"},
        {"text", toBytes("not a picture at all"), "neither a PNG nor a JPEG"},
        {"GIF", toBytes("GIF89a\1\0\1\0"), "neither a PNG nor a JPEG"},
        {"PNG signature alone", toBytes("\x89PNG\r\n\x1a\n"), "PNG: "},
        {"JPEG signature alone", Bytes{0xff, 0xd8, 0xff}, "the picture is empty"},
        {"no width", fromHex(kEmpty), "PNG: "},
        {"too many pixels", fromHex(k20000Square), "20000x20000 pixels are too many"},
        {"too wide", fromHex(k40000Wide), "40000x1 pixels are too many"},
        {"rows missing", fromHex(kSecondRowMissing), "PNG: "},
        {"damaged", badCheck, "PNG: "},
        {"print colours", jpeg(TJPF_CMYK, TJSAMP_444, 0), "CMYK"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto image = decodeImage(row.file);
        ASSERT_FALSE(image);
        EXPECT_NE(image.error().message.find(row.says), std::string::npos) << image.error().message;
    }
}

// A picture that was cut short in writing must not pass for the whole one. The closing marker of
// either format holds no picture, so a cut there may pass.
TEST(ImageReader, ACutPictureIsNeverHalfAPicture) {
    const PixelBuffer picture = pictures::textLike(120, 90);
    const struct {
        const char* name;
        Bytes file;
        std::size_t closing;
    } rows[] = {
        {"PNG", *withPixels(picture, encodePng), 20},
        {"JPEG", *withPixels(picture, [](const Pixels& p) { return encodeJpeg(p, 80); }), 8},
    };
    for (const auto& row : rows) {
        for (std::size_t length = 0; length + row.closing < row.file.size(); ++length) {
            const auto image = decodeImage(std::span(row.file).first(length));
            EXPECT_FALSE(image) << row.name << " cut at " << length << " of " << row.file.size();
        }
    }
}

class ImageFile : public testing::Test {
 protected:
    ImageFile() {
        char name[] = "/tmp/tandrel-image-XXXXXX";
        folder = ::mkdtemp(name);
    }
    ~ImageFile() override { std::filesystem::remove_all(folder); }

    std::filesystem::path folder;
};

TEST_F(ImageFile, IsReadFromDisk) {
    const PixelBuffer picture = pictures::noise(31, 17);
    const auto path = folder / "screen.png";
    ASSERT_TRUE(replaceFile(path, toText(*withPixels(picture, encodePng))));
    const auto image = readImage(path);
    ASSERT_TRUE(image) << image.error().message;
    EXPECT_TRUE(pictures::sameColours(*image, picture));
}

TEST_F(ImageFile, ErrorsNameTheFile) {
    const auto text = folder / "notes.png";
    ASSERT_TRUE(replaceFile(text, "hello"));
    for (const auto& path : {text, folder / "missing.png", folder}) {
        const auto image = readImage(path);
        ASSERT_FALSE(image);
        EXPECT_NE(image.error().message.find(path.string()), std::string::npos);
    }
}

}  // namespace
}  // namespace tandrel
