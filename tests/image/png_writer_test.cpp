#include "image/png_writer.h"

#include <gtest/gtest.h>
#include <isa-l/igzip_lib.h>

#include "image/image_reader.h"
#include "image/pictures.h"

namespace tandrel {
namespace {

using pictures::Colour;

Bytes encoded(const PixelBuffer& picture) {
    return withPixels(picture, encodePng).value_or(Bytes{});
}

std::uint32_t big32(const Bytes& bytes, std::size_t at) {
    return std::uint32_t(bytes[at]) << 24 | std::uint32_t(bytes[at + 1]) << 16 |
           std::uint32_t(bytes[at + 2]) << 8 | bytes[at + 3];
}

TEST(PngWriter, DecodesBackToTheSamePixels) {
    const std::pair<const char*, PixelBuffer> rows[] = {
        {"one pixel", pictures::plain(1, 1, {1, 2, 3})},
        {"one column", pictures::noise(1, 400)},
        {"one row, widest", pictures::noise(32767, 1)},
        {"noise, in alpha as well, and more than one band", pictures::noise(301, 655)},
        {"text", pictures::textLike(603, 1311)},
        {"all rows alike",
         pictures::drawn(200, 100, [](int x, int) { return Colour{x, 0, 255 - x}; })},
        {"differences that borrow in every byte",
         pictures::drawn(64, 64,
                         [](int x, int y) {
                             const int odd = (x + y) % 2;
                             return Colour{odd * 255, 128 - odd, (x * 31 + y * 17) % 256};
                         })},
        {"padded rows", pictures::padded(pictures::noise(33, 21), 60)},
    };
    for (const auto& [name, picture] : rows) {
        const auto decoded = decodeImage(encoded(picture));
        ASSERT_TRUE(decoded) << name << ": " << decoded.error().message;
        EXPECT_TRUE(pictures::sameColours(*decoded, picture)) << name;
    }
}

TEST(PngWriter, WritesEightBitRgbInThreeChunks) {
    const Bytes png = encoded(pictures::noise(300, 200));
    EXPECT_EQ(Bytes(png.begin(), png.begin() + 8),
              (Bytes{0x89, 'P', 'N', 'G', 0x0d, 0x0a, 0x1a, 0x0a}));
    EXPECT_EQ(Bytes(png.begin() + 8, png.begin() + 33),
              (Bytes{0, 0, 0, 13, 'I', 'H',  'D',  'R',  0,   0, 1, 44, 0, 0, 0, 200,  //
                     8, 2, 0, 0,  0,   0xdd, 0xbd, 0x4b, 0x02}));
    EXPECT_EQ(toText(Bytes(png.begin() + 37, png.begin() + 41)), "IDAT");
    EXPECT_EQ(Bytes(png.end() - 12, png.end()),
              (Bytes{0, 0, 0, 0, 'I', 'E', 'N', 'D', 0xae, 0x42, 0x60, 0x82}));
    EXPECT_EQ(33 + 12 + big32(png, 33) + 12, png.size());
}

// libpng does not look at the checksum of the zlib stream; other readers do.
TEST(PngWriter, TheZlibChecksumIsRight) {
    Bytes png = encoded(pictures::noise(301, 655));
    Bytes raw(655 * (1 + 3 * 301));
    inflate_state state;
    isal_inflate_init(&state);
    state.crc_flag = ISAL_ZLIB;
    state.next_in = png.data() + 41;
    state.avail_in = big32(png, 33);
    state.next_out = raw.data();
    state.avail_out = static_cast<std::uint32_t>(raw.size());
    EXPECT_EQ(isal_inflate(&state), ISAL_DECOMP_OK);
    EXPECT_EQ(state.block_state, ISAL_BLOCK_FINISH);
    EXPECT_EQ(state.avail_out, 0u);
}

TEST(PngWriter, AnEmptyPictureHasNoFile) { EXPECT_FALSE(encodePng(Pixels{})); }

}  // namespace
}  // namespace tandrel
