#pragma once

#include <random>
#include <string>
#include <vector>

#include "reading/drawn_frame.h"
#include "text/known_frame.h"

namespace tandrel {

struct DrawnTheme {
    Colour paper;
    Colour ink;
    Colour faint;
    Colour card;  // what lies on the paper
    Colour button;
    Colour onButton;
};

// A page to draw on that remembers its lines. Its size, density, font and colours are drawn by lot;
// all places and sizes are in points.
class DrawnPage {
 public:
    DrawnPage(std::mt19937& random, DrawnUse use);

    double width() const { return width_; }
    double height() const { return height_; }
    int density() const { return density_; }
    const DrawnTheme& theme() const { return theme_; }
    const std::string& font() const { return font_; }
    DrawnFrame& frame() { return frame_; }
    int pick(std::size_t count) { return static_cast<int>(random_() % count); }
    template <typename List>
    auto oneOf(const List& list) {
        return list[static_cast<std::size_t>(pick(std::size(list)))];
    }
    double between(double least, double most) {
        return least + (most - least) * static_cast<double>(random_() % 1000) / 999;
    }
    // Words as screens show them, and amounts in several notations.
    std::string words();
    std::string buttonWords();
    std::string amount();

    // With the left end of the baseline at (x, y); returns the width.
    double write(double x, double y, const std::string& text, double points, Colour colour,
                 KnownLine line = {});
    void writeBefore(double right, double y, const std::string& text, double points, Colour colour,
                     KnownLine line = {});
    void writeCentred(double centre, double y, const std::string& text, double points,
                      Colour colour, KnownLine line = {});
    // The same at the size asked for, or as fits into `room`.
    void writeFitting(double x, double y, double room, const std::string& text, double points,
                      Colour colour);
    double widthOf(const std::string& text, double points) const;

    KnownFrame finish(const std::string& name, PixelBuffer picture);

 private:
    std::mt19937& random_;
    const int density_;
    const double width_;
    const double height_;
    const DrawnTheme theme_;
    const std::string font_;
    DrawnFrame frame_;
    std::vector<KnownLine> lines_;
};

}  // namespace tandrel
