#include "screen/content_rect.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tandrel {
namespace {

constexpr double kSmallestBox = 60;  // of a box that may be a phone's screen
constexpr double kLargestShapeError = 0.012;
constexpr double kSlack = 0.015;  // of the longer side: content may stick out that far
constexpr double kLeastSlackPixels = 2;
constexpr double kTighter = 0.98;  // of the area: that much smaller is a better screen
constexpr double kSameArea = 0.02;

// A part of the picture and the box of its content.
struct Region {
    PixelRect area;
    PixelRect box;
};

struct Search {
    std::vector<double> shapes;
    bool hinted = false;
    std::string_view prefer;
};

std::string_view word(bool landscape) { return landscape ? "landscape" : "portrait"; }

ContentRect found(const PixelRect& rect, std::string_view method) {
    return {rect, std::string(word(rect.height < rect.width)), std::string(method)};
}

double area(const PixelRect& rect) { return rect.width * rect.height; }

bool contains(const PixelRect& outer, const PixelRect& inner) {
    return outer.x <= inner.x && outer.y <= inner.y &&
           inner.x + inner.width <= outer.x + outer.width &&
           inner.y + inner.height <= outer.y + outer.height;
}

PixelRect grown(const PixelRect& rect) {
    const double by = std::max(kSlack * std::max(rect.width, rect.height), kLeastSlackPixels);
    return {rect.x - by, rect.y - by, rect.width + 2 * by, rect.height + 2 * by};
}

double shapeError(const PixelRect& box, const std::vector<double>& shapes) {
    const double shape = std::min(box.width, box.height) / std::max(box.width, box.height);
    double smallest = HUGE_VAL;
    for (const double a : shapes) smallest = std::min(smallest, std::abs(shape - a) / a);
    return smallest;
}

// The box whose own edges are a phone's.
std::optional<ContentRect> byEdges(const std::vector<Region>& regions, const Search& search) {
    const Region* best = nullptr;
    double bestError = HUGE_VAL;
    for (const Region& region : regions) {
        if (std::min(region.box.width, region.box.height) < kSmallestBox) continue;
        const double error = shapeError(region.box, search.shapes);
        if (error > kLargestShapeError || error >= bestError) continue;
        best = &region;
        bestError = error;
    }
    if (best == nullptr) return std::nullopt;
    return found(best->box, "edges");
}

// The tightest screen of a known shape, centred in the region, that holds all content: what a phone
// looks like whose dark picture has bright parts only.
std::optional<ContentRect> byFitting(const Region& region, const Search& search) {
    std::optional<ContentRect> best;
    const std::size_t shapes = search.hinted ? 1 : 2;
    for (std::size_t i = 0; i < shapes; ++i) {
        for (const bool landscape : {false, true}) {
            const PixelRect rect = fit(search.shapes[i], landscape, region.area);
            if (!contains(grown(rect), region.box)) continue;
            const bool tighter = best && area(rect) < kTighter * area(best->rect);
            const bool preferred =
                best && std::abs(area(rect) - area(best->rect)) <= kSameArea * area(best->rect) &&
                word(landscape) == search.prefer;
            if (best && !tighter && !preferred) continue;
            best = ContentRect{rect, std::string(word(landscape)), "fit"};
        }
    }
    return best;
}

std::vector<PixelRect> regionsOf(const Pixels& pixels) {
    std::vector<PixelRect> regions{{0, 0, double(pixels.w), double(pixels.h)}};
    if (const int top = chromeTop(pixels); top >= 1) {
        regions.push_back({0, double(top), double(pixels.w), double(pixels.h - top)});
    }
    return regions;
}

}  // namespace

Json ContentRect::json() const {
    return {{"x", static_cast<int>(rect.x)},     {"y", static_cast<int>(rect.y)},
            {"w", static_cast<int>(rect.width)}, {"h", static_cast<int>(rect.height)},
            {"orientation", orientation},        {"method", method}};
}

PixelRect fit(double aspect, bool landscape, const PixelRect& in) {
    const double shape = landscape ? 1 / aspect : aspect;  // width / height
    PixelRect result = in;
    if (shape < in.width / in.height) {
        result.width = shape * in.height;
    } else {
        result.height = in.width / shape;
    }
    result.x = std::round(in.x + (in.width - result.width) / 2);
    result.y = std::round(in.y + (in.height - result.height) / 2);
    result.width = std::round(result.width);
    result.height = std::round(result.height);
    return result;
}

ContentRect detectContent(const Pixels& pixels, std::optional<double> aspectHint,
                          std::optional<std::string_view> prefer) {
    if (aspectHint && !(std::isfinite(*aspectHint) && *aspectHint > 0)) aspectHint.reset();
    Search search{{}, aspectHint.has_value(), prefer.value_or("")};
    if (aspectHint) search.shapes.push_back(*aspectHint);
    search.shapes.insert(search.shapes.end(), IPHONE_ASPECTS.begin(), IPHONE_ASPECTS.end());

    const std::vector<PixelRect> areas = regionsOf(pixels);
    std::vector<Region> regions;
    for (const PixelRect& part : areas) {
        if (const auto box = nonBlackBox(pixels, part)) regions.push_back({part, *box});
    }
    if (regions.empty()) {
        const bool landscape = search.prefer == word(true);
        return {fit(search.shapes.front(), landscape, areas.back()), std::string(word(landscape)),
                "blank"};
    }
    if (auto edges = byEdges(regions, search)) return *edges;
    for (auto region = regions.rbegin(); region != regions.rend(); ++region) {
        if (auto fitted = byFitting(*region, search)) return *fitted;
    }
    return found(regions.back().box, "bbox");
}

}  // namespace tandrel
