#include "screen/content_memory.h"

#include <gtest/gtest.h>

#include "image/pictures.h"

namespace tandrel {
namespace {

constexpr Size kFrame{800, 1400};

ContentRect rect(double x, double width, const char* method, const char* way = "portrait") {
    return {{x, 40, width, 1311}, way, method};
}

TEST(ContentMemory, KeepsTheKnownPlaceWhereTheNewOneSaysLess) {
    const ContentRect known = rect(90, 603, "edges");
    const std::tuple<const char*, ContentRect, bool> rows[] = {
        {"a part of it", rect(200, 300, "fit"), true},
        {"three pixels beyond", rect(87, 609, "bbox"), true},
        {"four pixels beyond", rect(86, 610, "bbox"), false},
        {"blank", rect(0, 800, "blank"), true},
        {"sure", rect(200, 300, "edges"), false},
        {"turned", rect(200, 300, "fit", "landscape"), false},
        {"blank and turned", rect(0, 800, "blank", "landscape"), false},
    };
    for (const auto& [name, found, isKept] : rows) {
        ContentMemory memory;
        EXPECT_EQ(memory.settle(known, kFrame), known);
        EXPECT_EQ(memory.settle(found, kFrame), isKept ? known : found) << name;
        EXPECT_EQ(memory.settle(found, {801, 1400}), found) << "another window";
    }
}

TEST(ContentMemory, RemembersTheOrientationOfWhatItSaw) {
    ContentMemory memory;
    EXPECT_EQ(memory.orientation(), std::nullopt);
    memory.settle(rect(0, 800, "blank", "landscape"), kFrame);
    EXPECT_EQ(memory.orientation(), std::nullopt) << "a blank frame says nothing";
    memory.settle(rect(0, 800, "fit", "landscape"), kFrame);
    EXPECT_EQ(memory.orientation(), "landscape");
}

TEST(Cropped, SeesTheSamePixelsThroughTheRectangle) {
    const PixelBuffer picture = pictures::noise(40, 30);
    const auto copies = PixelBuffer::copiesMade();
    const PixelBuffer part = cropped(picture, {10, 5, 20, 15});
    EXPECT_EQ((Size{part.width(), part.height()}), (Size{20, 15}));
    EXPECT_EQ(part.row(0), picture.row(5) + 40);
    EXPECT_EQ(PixelBuffer::copiesMade(), copies);
    const PixelBuffer edge = cropped(picture, {30, 20, 100, 100});
    EXPECT_EQ((Size{edge.width(), edge.height()}), (Size{10, 10}));
    EXPECT_FALSE(cropped({}, {0, 0, 1, 1}));
}

}  // namespace
}  // namespace tandrel
