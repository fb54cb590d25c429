#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/virtual/geometry.h"
#include "platform/virtual/scenario.h"

// What a page looks like and where it can be touched, in points. Laid out once for each change of
// what the phone shows; drawn from, and hit-tested against.
namespace tandrel {

enum class Weight { regular, medium, semibold, bold };
// one: what does not fit is cut at the end; tail: at the beginning; many: wrapped at words
enum class Lines { one, tail, many };

struct TextStyle {
    double size = 17;
    Weight weight = Weight::regular;
    Color color;
    enum class Align { left, center, right } align = Align::left;
    Lines lines = Lines::one;
};

struct BoxShape {
    Rect rect;
    double radius = 0;
    Color color;
};
struct GradientShape {  // from the top to the bottom
    Rect rect;
    Color top;
    Color bottom;
};
struct TextShape {
    Rect rect;  // one line is centered from top to bottom; many lines begin at the top
    std::string text;
    TextStyle style;
};
struct GlyphShape {
    Rect rect;
    const Glyph* glyph = nullptr;
    Color color;
};
// A picture made up of soft discs, different for each seed.
struct PictureShape {
    Rect rect;
    double radius = 0;
    Color color;
    std::uint32_t seed = 0;
};

using Shape = std::variant<BoxShape, GradientShape, TextShape, GlyphShape, PictureShape>;

struct ToggleTarget {
    std::string name;
};
struct FieldTarget {
    std::string name;
};
// Reached when a drag has taken the knob `distance` points to the right.
struct SlideTarget {
    double distance = 0;
    Action done;
};
struct SearchTarget {};  // opens the search screen
struct SearchResultTarget {
    Action open;
};
// Nothing happens, and nothing beneath is touched.
struct NoTarget {};

using TouchTarget = std::variant<NoTarget, Action, ToggleTarget, FieldTarget, SlideTarget,
                                 SearchTarget, SearchResultTarget>;

struct TouchArea {
    Rect rect;
    std::string label;  // what a person would say was touched
    TouchTarget target;
};

struct DisplayLayer {
    std::vector<Shape> shapes;     // in drawing order
    std::vector<TouchArea> areas;  // a later one lies over an earlier one

    // Adds all of `other`, moved down by `by`.
    void append(const DisplayLayer& other, double by);
};

struct DisplayList {
    Color background;
    DisplayLayer content;  // moves up by the scroll offset
    DisplayLayer bars;     // stands still over the content
    double contentHeight = 0;

    // The topmost area at a point of the screen; none when there is nothing to touch.
    const TouchArea* areaAt(Point point, double scroll) const;
    // Where on a screen of this height the middle of the topmost area with the label can be
    // touched.
    std::optional<Point> find(std::string_view label, double scroll, double height) const;
};

}  // namespace tandrel
