#pragma once

#include "platform/virtual/layout.h"
#include "platform/virtual/theme.h"

namespace tandrel {

inline constexpr double kMargin = 16;         // beside cards and text
inline constexpr double kStatusBar = 54;      // height
inline constexpr double kNavigationBar = 44;  // height, below the status bar
inline constexpr double kHomeIndicator = 34;  // height of the strip that belongs to it

// Adds the clock and the status symbols in one color, and the strip at the bottom that takes the
// owner home.
void addStatusBar(DisplayLayer& layer, const std::string& clock, const LayoutState& state,
                  const Color& color);
void addHomeIndicator(DisplayLayer& layer, const LayoutState& state, const Color& color);

// Stacks a page's items from the top down.
class PageBuilder {
 public:
    PageBuilder(const LayoutState& state, Fonts& fonts, double top)
        : state_(state), theme_(theme(state.appearance)), fonts_(fonts), y_(top) {}

    void add(const std::string& largeTitle);
    void add(const Item& item) {
        std::visit([this](const auto& any) { add(any); }, item);
    }

    double bottom() const { return y_; }
    DisplayLayer take() { return std::move(layer_); }

 private:
    void add(const IconsItem& item);
    void add(const RowsItem& item);
    void add(const TextItem& item);
    void add(const ButtonItem& item);
    void add(const FieldItem& item);
    void add(const ImageItem& item);
    void add(const SlideItem& item);
    void add(const SpaceItem& item) { y_ += item.height; }

    void addRow(const Row& row, const Rect& place);
    void addSwitch(const Row& row, const Rect& place);
    void addCaption(const std::string& text, double below);
    void addShape(Shape shape) { layer_.shapes.push_back(std::move(shape)); }
    void addArea(const Rect& rect, const std::string& label, TouchTarget target) {
        layer_.areas.push_back({rect, label, std::move(target)});
    }
    TextStyle style(double size, Weight weight, const Color& color) const {
        return {.size = size, .weight = weight, .color = color};
    }
    double innerWidth() const { return state_.width - 2 * kMargin; }

    const LayoutState& state_;
    const Theme& theme_;
    Fonts& fonts_;
    double y_;
    DisplayLayer layer_;
};

// Icons in rows of their own from `top` down, with white labels in a grid and none in the dock;
// gives the bottom of the last row.
double addIcons(DisplayLayer& layer, const IconsItem& item, double width, double top);

}  // namespace tandrel
