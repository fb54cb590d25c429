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
#include "platform/virtual/touch_gesture.h"

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
    // The middle of the topmost thing with this label that can be seen.
    std::optional<ScreenFraction> find(std::string_view label);
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
    void handle(const PointerTo& event, TimePoint now);
    void handle(const PointerBy& event, TimePoint now);
    void handle(ButtonEvent event, TimePoint now);
    void handle(const KeyEvent& event, TimePoint now);
    void handle(const ConsumerEvent& event, TimePoint now);

    void placePointer(Point at);
    Point pointerPlace() const;
    void press(Point at, TimePoint now, TouchGesture::Effect effect);
    void drag(Point to);
    void release(TimePoint now);
    bool isCurrent(const TouchGesture& touch) const;
    void finish(const TouchGesture& touch);
    void endSlide();
    void activate(const TouchArea& area);
    void toggleSearch();
    void typeIntoSearch(std::uint16_t usage, std::string_view text);
    void openFromSearch(const Action& action);
    void typeIntoField(std::uint16_t usage, std::string_view text);
    void focus(const std::string& field);
    void flip(const std::string& toggle);
    bool isOn(std::string_view toggle) const;
    const DisplayList& display();
    void screenChanged();
    double scrollEnd();
    Point toPoint(ScreenFraction at) const;
    ScreenFraction toFraction(Point at) const;

    const Scenario& scenario_;
    Fonts& fonts_;
    const Page* page_;
    LayoutState state_;
    std::optional<DisplayList> display_;
    VirtualPhoneRecord record_;
    std::optional<TouchGesture> touch_;
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
