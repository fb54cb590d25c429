#include "platform/virtual/display_list.h"

#include <algorithm>
#include <ranges>

namespace tandrel {
namespace {

const TouchArea* topmost(const std::vector<TouchArea>& areas, Point point) {
    const auto fromTop = areas | std::views::reverse;
    const auto found = std::ranges::find_if(
        fromTop, [point](const TouchArea& area) { return area.rect.contains(point); });
    return found == fromTop.end() ? nullptr : &*found;
}

}  // namespace

void DisplayLayer::append(const DisplayLayer& other, double by) {
    for (Shape shape : other.shapes) {
        std::visit([by](auto& any) { any.rect.y += by; }, shape);
        shapes.push_back(std::move(shape));
    }
    for (TouchArea area : other.areas) {
        area.rect.y += by;
        areas.push_back(std::move(area));
    }
}

const TouchArea* DisplayList::areaAt(Point point, double scroll) const {
    if (const auto* area = topmost(bars.areas, point)) return area;
    return topmost(content.areas, {point.x, point.y + scroll});
}

std::optional<Point> DisplayList::find(std::string_view label, double scroll, double height) const {
    std::optional<Point> found;
    const auto search = [&](const DisplayLayer& layer, double offset) {
        for (const TouchArea& area : layer.areas) {
            const Point center{area.rect.center().x, area.rect.center().y - offset};
            if (area.label != label || center.y < 0 || center.y >= height) continue;
            const TouchArea* there = areaAt(center, scroll);
            if (there != nullptr && there->label == label) found = center;
        }
    };
    search(content, scroll);
    search(bars, 0);
    return found;
}

}  // namespace tandrel
