#include "image/gdp_reader.h"

#include <cstring>

#include <gtest/gtest.h>

#include "image/gdp_writer.h"

namespace tandrel {
namespace {

// Feeds the stream in pieces of at most `step` bytes and counts the frames; -1 for an error.
struct Read {
    int frames = 0;
    std::string error;
    PixelBuffer last;
};
Read readAll(const Bytes& stream, std::size_t step = 1'000'000) {
    GdpReader reader;
    Read read;
    for (std::size_t at = 0; at < stream.size();) {
        const auto space = reader.space();
        const std::size_t count = std::min({space.size(), step, stream.size() - at});
        std::memcpy(space.data(), stream.data() + at, count);
        at += count;
        const auto event = reader.take(count);
        if (!event) return read.error = event.error().message, read;
        if (!*event || !(*event)->frame) continue;
        ++read.frames;
        read.last = (*event)->frame;
    }
    return read;
}

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

TEST(GdpReader, TurnsFramesIntoPixels) {
    // Odd sides, where rows and planes are padded.
    const Bytes stream = joined({gdp::caps(499, 1081), gdp::frame(499, 1081, 235, 128, 128),
                                 gdp::frame(499, 1081, 81, 90, 240)});
    for (const std::size_t step : {1'000'000UL, 4096UL, 61UL}) {
        const Read read = readAll(stream, step);
        EXPECT_EQ(read.frames, 2) << read.error;
        EXPECT_EQ(read.last.width(), 499);
        EXPECT_EQ(read.last.height(), 1081);
        const std::uint8_t* corner = read.last.row(1080) + 4 * 498;
        EXPECT_LE(corner[0], 3) << "blue of red";
        EXPECT_GE(corner[2], 252) << "red of red";
    }
}

TEST(GdpReader, FollowsANewFormInMidStream) {
    const Read read = readAll(joined({gdp::caps(498, 1080), gdp::frame(498, 1080), gdp::event(),
                                      gdp::caps(1080, 498), gdp::frame(1080, 498)}));
    EXPECT_EQ(read.frames, 2) << read.error;
    EXPECT_EQ(read.last.width(), 1080);
}

TEST(GdpReader, ColoursFollowTheCaps) {
    const auto green = [](const char* more) {
        return readAll(joined({gdp::caps(16, 16, more), gdp::frame(16, 16, 120, 60, 60)}))
            .last.pixels()[1];
    };
    EXPECT_NE(green(""), green(", colorimetry=(string)bt709"));
}

TEST(GdpReader, RefusesWhatIsNoStreamOfFrames) {
    Bytes wrongVersion = gdp::caps(16, 16);
    wrongVersion[0] = 2;
    const std::tuple<const char*, Bytes, const char*> rows[] = {
        {"frame first", gdp::frame(16, 16),
         "the receiver sent a frame before it told the frames' form"},
        {"wrong version", wrongVersion, "what the receiver sends is no stream of frames"},
        {"random", Bytes(200, 0x37), "what the receiver sends is no stream of frames"},
        {"too large a side", gdp::caps(100'000, 100'000),
         "the receiver sends frames of no usable size"},
        {"too many pixels", gdp::caps(8192, 2049), "the receiver sends frames of no usable size"},
        {"no side", gdp::message(2, "video/x-raw, format=(string)I420, width=(int)16"),
         "the receiver sends frames of no usable size"},
        {"half a number", gdp::message(2, "video/x-raw, format=I420, width=1x, height=16"),
         "the receiver sends frames of no usable size"},
        {"other pixels", gdp::message(2, "video/x-raw, format=(string)NV12, width=(int)16"),
         "the receiver sends NV12 instead of I420 frames"},
        {"compressed", gdp::message(2, "video/x-h264, width=(int)16"),
         "the receiver sends no raw video"},
        {"short frame", joined({gdp::caps(16, 16), gdp::message(1, std::string(383, 'x'))}),
         "the receiver sent a frame of 383 bytes, where 16 x 16 takes 384"},
        {"long frame", joined({gdp::caps(16, 16), gdp::message(1, std::string(80'000, 'x'))}),
         "the receiver sent a message of 80000 bytes, which is none"},
        {"long caps", gdp::message(2, std::string(70'000, 'x')),
         "the receiver sent a message of 70000 bytes, which is none"},
    };
    for (const auto& [name, stream, error] : rows) EXPECT_EQ(readAll(stream).error, error) << name;
}

TEST(RawVideoForm, ReadsCapsWithAndWithoutTypesUpToTheLargestFrame) {
    EXPECT_TRUE(RawVideoForm::parse("video/x-raw,format=I420,width=8192,height=2048"));
    const RawVideoForm plain{498, 1080};
    for (const char* caps :
         {"video/x-raw, format=(string)I420, width=(int)498, height=(int)1080, views=(int)1",
          "video/x-raw,format=I420,width=498,height=1080;",
          "video/x-raw, pixel-width=(int)3, format=(string)\"I420\", width=(int)498, "
          "height=(int)1080"}) {
        EXPECT_EQ(RawVideoForm::parse(caps).value_or(RawVideoForm{}), plain) << caps;
    }
}

}  // namespace
}  // namespace tandrel
