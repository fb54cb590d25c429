#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/clock.h"
#include "platform/virtual/input_event.h"
#include "platform/virtual/layout.h"
#include "platform/virtual/phone_record.h"
#include "platform/virtual/scenario.h"

namespace tandrel {

enum class TouchPhase { down, move, up };

// The phone as a machine without time, threads or wires: takes what its keyboard, pointer and owner
// do, and knows what it shows. `scenario` and `fonts` outlive it. One thread at a time.
class PhoneModel {
 public:
    PhoneModel(const Scenario& scenario, Fonts& fonts);

    // The moment is only noted in the record.
    void receive(const InputEvent& event, TimePoint now);
    void touch(TouchPhase phase, ScreenFraction at, TimePoint now);

    void goHome();
    void showPage(std::string_view name);  // a name without a page changes nothing
    void perform(const Action& action);
    void doubleClickSideButton();
    void sleep();
    void wake();
    void lock();
    void unlock();
    void rotate();

    // What is on the screen now.
    struct Look {
        const DisplayList* display = nullptr;  // none: the screen is dark
        double width = 0;                      // points, as held
        double height = 0;
        double scroll = 0;
        std::optional<Point> pointer;
    };
    Look look();
    // Raised whenever the screen changed apart from the pointer, and whenever the pointer did.
    std::uint64_t screenRevision() const { return screenRevision_; }
    std::uint64_t pointerRevision() const { return pointerRevision_; }

    const Page& page() const { return *page_; }
    // Counts the pages shown, so that what a page does later can be told from another visit's.
    std::uint64_t visit() const { return visit_; }
    // The troubles that actions asked for since the last call.
    std::vector<Action> takeTroubles() { return std::exchange(troubles_, {}); }
    const VirtualPhoneRecord& record();

 private:
    struct Touch {
        TouchArea area;  // as it was when the touch began
        Point start;
        Point last;
        double startScroll = 0;
        bool ignored = false;
        bool dragging = false;
        TimePoint since;
    };

    void receive(const PointerTo& event, TimePoint now);
    void receive(const PointerBy& event, TimePoint now);
    void receive(ButtonEvent event, TimePoint now);
    void receive(const KeyEvent& event, TimePoint now);
    void receive(const ConsumerEvent& event, TimePoint now);

    void placePointer(Point at, TimePoint now);
    void press(Point at, TimePoint now, bool effective);
    void drag(Point to);
    void release(TimePoint now);
    void finishTouch(const Touch& touch);
    void activate(const TouchArea& area);
    bool endedAsHomeSwipe(const Touch& touch) const;
    void typeIntoSearch(std::uint16_t usage, std::string_view text);
    void typeIntoField(std::uint16_t usage, std::string_view text);
    void openSearch();
    void focus(const std::string& field);
    const FieldItem* findField(std::string_view name) const;
    void flip(const std::string& toggle);
    bool isOn(std::string_view toggle) const;
    const DisplayList& display();
    void screenChanged(bool relayout = true);
    Point toPoint(ScreenFraction at) const;
    ScreenFraction toFraction(Point at) const;
    double scrollEnd();

    const Scenario& scenario_;
    Fonts& fonts_;
    const Page* page_;
    LayoutState state_;
    std::optional<DisplayList> display_;
    VirtualPhoneRecord record_;
    std::optional<Touch> touch_;
    std::optional<Point> pointer_;
    LockPrompt prompt_ = LockPrompt::none;
    bool locked_ = false;
    bool asleep_ = false;
    bool landscape_ = false;
    bool searching_ = false;
    std::string query_;
    double scroll_ = 0;
    std::vector<Action> troubles_;
    std::uint64_t visit_ = 0;
    std::uint64_t screenRevision_ = 1;
    std::uint64_t pointerRevision_ = 1;
};

}  // namespace tandrel
