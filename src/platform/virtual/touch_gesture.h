#pragma once

#include <cstdint>
#include <string>

#include "base/clock.h"
#include "platform/virtual/display_list.h"

namespace tandrel {

// One touch from down to up: where it began and on what, and what it has become.
class TouchGesture {
 public:
    // Whether the screen takes it: not while it is dark, and not from a pointer without
    // AssistiveTouch.
    enum class Effect { taken, ignored };

    struct Beginning {
        Point at;
        TimePoint time;
        Effect effect = Effect::taken;
        TouchArea area;  // what lay there, as it was then
        std::string page;
        std::uint64_t visit = 0;
        double scroll = 0;
    };
    explicit TouchGesture(Beginning beginning)
        : beginning_(std::move(beginning)), last_(beginning_.at) {}

    void moveTo(Point to);

    const Beginning& beginning() const { return beginning_; }
    bool isTaken() const { return beginning_.effect == Effect::taken; }
    Point last() const { return last_; }
    double right() const { return last_.x - beginning_.at.x; }
    double up() const { return beginning_.at.y - last_.y; }
    // It wandered too far for a tap.
    bool isDrag() const { return drag_; }
    bool isSwipeUp() const;
    bool isHomeSwipe(double screenHeight) const;
    // A slide control's knob was taken to its end.
    bool isSlideDone(const SlideTarget& slide) const;

 private:
    const Beginning beginning_;
    Point last_;
    bool drag_ = false;
};

}  // namespace tandrel
