#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/json.h"
#include "image/pixels.h"
#include "screen/aspect.h"
#include "screen/content_box.h"

// Where in the picture of a whole window the phone's screen lies.
namespace tandrel {

struct ContentRect {
    PixelRect rect;
    std::string orientation;  // "portrait" or "landscape"
    // How it was found: "edges", its content has a phone's shape; "fit", the smallest phone screen
    // around the content; "blank", there is none; "bbox", the content whatever its shape.
    std::string method;

    bool operator==(const ContentRect&) const = default;

    // The rectangle's values as integers "x", "y", "w", "h", and both texts.
    Json json() const;
};

// The largest screen of that shape (short / long side) inside the rectangle, centred.
PixelRect fit(double aspect, bool landscape, const PixelRect& in);

// The phone's screen. `aspectHint` is a shape to try before the known ones; `prefer` is the
// orientation to take where two fit equally well. Any picture, also an empty one, gives a result.
ContentRect detectContent(const Pixels& pixels, std::optional<double> aspectHint,
                          std::optional<std::string_view> prefer);

}  // namespace tandrel
