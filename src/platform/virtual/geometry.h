#pragma once

namespace tandrel {

// Lengths and places on a phone's screen in points from the top left, as its designers count: a
// point is `scale` pixels of the frame.
struct Point {
    double x = 0;
    double y = 0;

    bool operator==(const Point&) const = default;
};

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool contains(Point point) const {
        return point.x >= x && point.x < x + width && point.y >= y && point.y < y + height;
    }
    Rect inset(double by) const { return {x + by, y + by, width - 2 * by, height - 2 * by}; }
    Point center() const { return {x + width / 2, y + height / 2}; }
};

// Parts 0 to 1.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    bool operator==(const Color&) const = default;
};

// 0xRRGGBB
constexpr Color rgb(unsigned value, double alpha = 1) {
    return {((value >> 16) & 0xFF) / 255.0, ((value >> 8) & 0xFF) / 255.0, (value & 0xFF) / 255.0,
            alpha};
}

inline constexpr Color kWhite = rgb(0xFFFFFF);

}  // namespace tandrel
