#include "image/area_scaler.h"

#include <cmath>

#include <gtest/gtest.h>

#include "image/pictures.h"

namespace tandrel {
namespace {

using pictures::Colour;

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

TEST(AreaScaler, IsTheAreaAverageForAnyRatio) {
    for (const Row& row : kSizes) {
        SCOPED_TRACE(row.name);
        const PixelBuffer from = pictures::padded(pictures::noise(row.width, row.height), 12);
        const PixelBuffer to = scaledTo(from, row.toWidth, row.toHeight);
        double error = 0;
        for (int y = 0; y < row.toHeight; ++y) {
            for (int x = 0; x < row.toWidth; ++x) {
                for (int c = 0; c < 3; ++c) {
                    const double exact =
                        std::round(exactAverage(from, row.toWidth, row.toHeight, x, y, c));
                    const double off = exact - to.row(y)[4 * x + c];
                    ASSERT_LE(std::abs(off), 1) << x << "," << y << " channel " << c;
                    error += off * off;
                }
            }
        }
        EXPECT_GE(decibels(error, 3.0 * row.toWidth * row.toHeight), 60);
    }
}

TEST(AreaScaler, GreyIsTheBrightnessOfTheAreaAverage) {
    for (const Row& row : kSizes) {
        SCOPED_TRACE(row.name);
        const PixelBuffer from = pictures::noise(row.width, row.height);
        const Bytes grey = greyOf(from, row.toWidth, row.toHeight);
        ASSERT_EQ(grey.size(), std::size_t(row.toWidth) * std::size_t(row.toHeight));
        double error = 0;
        for (int y = 0; y < row.toHeight; ++y) {
            for (int x = 0; x < row.toWidth; ++x) {
                const auto mean = [&](int channel) {
                    return exactAverage(from, row.toWidth, row.toHeight, x, y, channel);
                };
                const double exact = 0.114 * mean(0) + 0.587 * mean(1) + 0.299 * mean(2);
                const double off = exact - grey[std::size_t(y * row.toWidth + x)];
                error += off * off;
            }
        }
        EXPECT_GE(decibels(error, double(row.toWidth) * row.toHeight), 45);
    }
}

TEST(AreaScaler, PartlyCoveredPixelsCountInPart) {
    // Three pixels into two: the middle one counts half in each.
    const PixelBuffer from =
        pictures::drawn(3, 1, [](int x, int) { return Colour{x * 90, 0, 255 - x * 90}; });
    const PixelBuffer to = scaledTo(from, 2, 1);
    EXPECT_EQ(pictures::colourAt(to, 0, 0), (Colour{30, 0, 225}));
    EXPECT_EQ(pictures::colourAt(to, 1, 0), (Colour{150, 0, 105}));
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

TEST(AreaScaler, GreyWeighsGreenMostAndBlueLeast) {
    EXPECT_EQ(greyOf(pictures::plain(4, 4, {255, 0, 0}), 1, 1), Bytes{77});
    EXPECT_EQ(greyOf(pictures::plain(4, 4, {0, 255, 0}), 1, 1), Bytes{149});
    EXPECT_EQ(greyOf(pictures::plain(4, 4, {0, 0, 255}), 1, 1), Bytes{29});
}

}  // namespace
}  // namespace tandrel
