#include "platform/virtual/touch_gesture.h"

#include <cmath>

namespace tandrel {
namespace {

constexpr double kDragStart = 10;      // points that a touch may wander and still be a tap
constexpr double kSwipeUp = 80;        // points
constexpr double kHomeSwipeZone = 24;  // points from the bottom edge
constexpr double kSlideDone = 0.9;     // of a slide control's length

}  // namespace

void TouchGesture::moveTo(Point to) {
    last_ = to;
    if (std::hypot(right(), up()) > kDragStart) drag_ = true;
}

bool TouchGesture::isSwipeUp() const { return up() >= kSwipeUp; }

bool TouchGesture::isHomeSwipe(double screenHeight) const {
    return isSwipeUp() && beginning_.at.y >= screenHeight - kHomeSwipeZone;
}

bool TouchGesture::isSlideDone(const SlideTarget& slide) const {
    return right() >= kSlideDone * slide.distance;
}

}  // namespace tandrel
