#include "screen/content_box.h"

#include <algorithm>

namespace tandrel {
namespace {

constexpr int kCoarseSamples = 400;  // along the shorter side
constexpr int kFewestRowsWithBar = 13;
constexpr int kBarPercent = 8;    // of the height: no title bar is taller
constexpr int kBarSamples = 200;  // in a row
constexpr double kBarBrightShare = 0.98;
constexpr double kBarVariance = 40;  // squared grey levels

// Whole pixels; `right` and `bottom` lie just outside.
struct Span {
    int left;
    int top;
    int right;
    int bottom;
};

int clampedToInt(double value, int most) {
    return static_cast<int>(std::clamp(value, 0.0, static_cast<double>(most)));
}

Span wholePixels(const Pixels& pixels, const PixelRect& rect) {
    return {clampedToInt(rect.x, pixels.w), clampedToInt(rect.y, pixels.h),
            clampedToInt(rect.x + rect.width, pixels.w),
            clampedToInt(rect.y + rect.height, pixels.h)};
}

bool isContent(const std::uint8_t* p) { return p[0] > BLACK || p[1] > BLACK || p[2] > BLACK; }

bool rowHasContent(const Pixels& pixels, int y, const Span& in) {
    const std::uint8_t* p = pixels.at(in.left, y);
    for (int x = in.left; x < in.right; ++x, p += 4) {
        if (isContent(p)) return true;
    }
    return false;
}

bool columnHasContent(const Pixels& pixels, int x, const Span& in) {
    for (int y = in.top; y < in.bottom; ++y) {
        if (isContent(pixels.at(x, y))) return true;
    }
    return false;
}

// The content that the samples of a coarse grid meet, its edges on sampled pixels.
std::optional<Span> coarseBox(const Pixels& pixels, const Span& in) {
    const int step = std::max(1, std::min(in.right - in.left, in.bottom - in.top) / kCoarseSamples);
    Span box{in.right, in.bottom, in.left, in.top};
    for (int y = in.top; y < in.bottom; y += step) {
        for (int x = in.left; x < in.right; x += step) {
            if (!isContent(pixels.at(x, y))) continue;
            box.left = std::min(box.left, x);
            box.right = std::max(box.right, x + 1);
            box.top = std::min(box.top, y);
            box.bottom = y + 1;
        }
    }
    if (box.left >= box.right) return std::nullopt;
    return box;
}

struct BarRow {
    double brightShare;
    double variance;
};

BarRow measure(const Pixels& pixels, int y, int step) {
    double sum = 0;
    double squares = 0;
    int bright = 0;
    int count = 0;
    for (int x = 0; x < pixels.w; x += step, ++count) {
        const double luma = pixels.luma(x, y);
        sum += luma;
        squares += luma * luma;
        bright += pixels.v(x, y) > BLACK;
    }
    const double mean = sum / count;
    return {static_cast<double>(bright) / count, squares / count - mean * mean};
}

}  // namespace

std::optional<PixelRect> nonBlackBox(const Pixels& pixels, const PixelRect& rect) {
    const Span in = wholePixels(pixels, rect);
    if (in.top >= in.bottom || in.left >= in.right) return std::nullopt;
    auto box = coarseBox(pixels, in);
    if (!box) return std::nullopt;
    while (box->left > in.left && columnHasContent(pixels, box->left - 1, in)) --box->left;
    while (box->right < in.right && columnHasContent(pixels, box->right, in)) ++box->right;
    while (box->top > in.top && rowHasContent(pixels, box->top - 1, in)) --box->top;
    while (box->bottom < in.bottom && rowHasContent(pixels, box->bottom, in)) ++box->bottom;
    return PixelRect{double(box->left), double(box->top), double(box->right - box->left),
                     double(box->bottom - box->top)};
}

int chromeTop(const Pixels& pixels) {
    if (pixels.h < kFewestRowsWithBar || pixels.w < 1) return 0;
    const int rows = kBarPercent * pixels.h / 100;
    const int step = pixels.w >= kBarSamples ? pixels.w / kBarSamples : 1;
    for (int y = 0; y < rows; ++y) {
        const BarRow row = measure(pixels, y, step);
        if (row.brightShare < kBarBrightShare || row.variance > kBarVariance) return y;
    }
    return 0;  // bright all the way: the picture begins with content, not with a bar
}

}  // namespace tandrel
