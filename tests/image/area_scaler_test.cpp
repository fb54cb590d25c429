#include "image/area_scaler.h"

#include <cmath>

#include <gtest/gtest.h>

#include "image/pictures.h"

namespace tandrel {
namespace {

PixelBuffer scaledTo(const PixelBuffer& picture, int width, int height) {
    return withPixels(picture, [&](const Pixels& pixels) { return scaled(pixels, width, height); });
}

Bytes greyOf(const PixelBuffer& picture, int width, int height) {
    return withPixels(picture,
                      [&](const Pixels& pixels) { return greyThumbnail(pixels, width, height); });
}

// The mean of one channel over the area that output pixel (x, y) covers, in real numbers.
double exactAverage(const PixelBuffer& from, int width, int height, int x, int y, int channel) {
    const double left = double(from.width()) * x / width;
    const double right = double(from.width()) * (x + 1) / width;
    const double top = double(from.height()) * y / height;
    const double bottom = double(from.height()) * (y + 1) / height;
    double sum = 0;
    for (int v = int(top); v < std::min(int(std::ceil(bottom)), from.height()); ++v) {
        const double tall = std::min(bottom, v + 1.0) - std::max(top, double(v));
        for (int u = int(left); u < std::min(int(std::ceil(right)), from.width()); ++u) {
            const double wide = std::min(right, u + 1.0) - std::max(left, double(u));
            sum += tall * wide * from.row(v)[4 * u + channel];
        }
    }
    return sum / ((right - left) * (bottom - top));
}

double decibels(double squaredError, double count) {
    return 10 * std::log10(255.0 * 255.0 * count / std::max(squaredError, 1e-9));
}

constexpr double kGreyWeights[] = {0.114, 0.587, 0.299};  // of blue, green and red

struct Row {
    const char* name;
    int width, height, toWidth, toHeight;
};

constexpr Row kSizes[] = {
    {"to 900 long edge, odd ratio", 301, 655, 103, 225},
    {"pointer thumbnail", 603, 1311, 90, 195},
    {"brightness thumbnail", 603, 1311, 24, 52},
    {"many rows to one", 3, 5000, 2, 1},
    {"many columns to one", 5000, 3, 1, 2},
    {"enlarged", 7, 9, 20, 31},
    {"one way larger, one way smaller", 50, 40, 60, 7},
};

TEST(AreaScaler, IsTheAreaAverageAndGreyItsBrightnessForAnyRatio) {
    for (const Row& row : kSizes) {
        SCOPED_TRACE(row.name);
        const PixelBuffer from = pictures::padded(pictures::noise(row.width, row.height), 12);
        const PixelBuffer to = scaledTo(from, row.toWidth, row.toHeight);
        const Bytes grey = greyOf(from, row.toWidth, row.toHeight);
        const double count = double(row.toWidth) * row.toHeight;
        ASSERT_EQ(double(grey.size()), count);
        double error = 0;
        double greyError = 0;
        for (int y = 0; y < row.toHeight; ++y) {
            for (int x = 0; x < row.toWidth; ++x) {
                double brightness = -grey[std::size_t(y * row.toWidth + x)];
                for (int c = 0; c < 3; ++c) {
                    const double exact = exactAverage(from, row.toWidth, row.toHeight, x, y, c);
                    const double off = std::round(exact) - to.row(y)[4 * x + c];
                    ASSERT_LE(std::abs(off), 1) << x << "," << y << " channel " << c;
                    error += off * off;
                    brightness += kGreyWeights[c] * exact;
                }
                greyError += brightness * brightness;
            }
        }
        EXPECT_GE(decibels(error, 3 * count), 60);
        EXPECT_GE(decibels(greyError, count), 45);
    }
}

TEST(AreaScaler, APlainPictureKeepsItsColour) {
    for (const int level : {0, 1, 127, 254, 255}) {
        for (const auto& [width, height] : {std::pair{1, 32767}, {32767, 1}, {37, 41}}) {
            SCOPED_TRACE(testing::Message() << level << " " << width << "x" << height);
            const PixelBuffer from = pictures::plain(width, height, {level, level, level});
            for (const int side : {1, 7, 64}) {
                const PixelBuffer to = scaledTo(from, side, side);
                EXPECT_TRUE(
                    pictures::sameColours(to, pictures::plain(side, side, {level, level, level})));
                EXPECT_EQ(greyOf(from, side, side),
                          Bytes(std::size_t(side * side), std::uint8_t(level)));
            }
        }
    }
}

}  // namespace
}  // namespace tandrel
