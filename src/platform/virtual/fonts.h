#pragma once

#include <memory>
#include <string>
#include <vector>

#include <cairo.h>

#include "platform/virtual/display_list.h"

namespace tandrel {

// One line of a text as it stands on the page.
struct SetLine {
    std::string text;
    Rect ink;
    bool isCut = false;  // some of the text is left out
};

// Sets and draws text in Inter, or in whatever sans serif the system has instead; without any font
// at all it draws nothing or boxes. One thread at a time.
class Fonts {
 public:
    Fonts();
    ~Fonts();
    Fonts(const Fonts&) = delete;
    Fonts& operator=(const Fonts&) = delete;

    struct Extent {
        double width = 0;
        double height = 0;
    };
    // The room that the text takes when it may be `width` points wide.
    Extent measure(const std::string& text, const TextStyle& style, double width);
    // Where the caret stands behind the text's last character, `width` points being there; its top.
    Point caret(const std::string& text, const TextStyle& style, double width);
    void draw(cairo_t* cairo, const TextShape& shape);
    // The lines that `draw` sets the text in.
    std::vector<SetLine> lines(const TextShape& shape);

 private:
    struct Context;
    std::unique_ptr<Context> context_;
};

}  // namespace tandrel
