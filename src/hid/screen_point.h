#pragma once

namespace tandrel {

// A place on the phone's screen as fractions of its width and height, 0 to 1 from the top left.
struct ScreenPoint {
    double x = 0;
    double y = 0;

    bool operator==(const ScreenPoint&) const = default;
};

}  // namespace tandrel
