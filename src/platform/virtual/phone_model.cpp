#include "platform/virtual/phone_model.h"

#include <algorithm>
#include <cmath>

#include "base/unicode.h"
#include "platform/virtual/keyboard_layout.h"

namespace tandrel {
namespace {

constexpr double kDragStart = 10;              // points that a touch may wander and still be a tap
constexpr double kHomeSwipeZone = 24;          // points from the bottom edge
constexpr double kHomeSwipe = 80;              // points upwards
constexpr double kSlideDone = 0.9;             // of a slide control's length
constexpr std::size_t kLongestEntry = 10'000;  // bytes of a field or of the search
constexpr std::string_view kAssistiveTouch = "assistiveTouch";
constexpr std::string_view kDarkMode = "darkMode";

constexpr std::uint16_t kReturn = 0x28;
constexpr std::uint16_t kEscape = 0x29;
constexpr std::uint16_t kBackspace = 0x2A;
constexpr std::uint16_t kSpace = 0x2C;
constexpr std::uint16_t kKeyH = 0x0B;

// Slow motion is finer and fast motion coarser than the counts, as pointers do.
double accelerated(int counts) { return counts * (0.6 + std::abs(counts) / 64.0); }

template <typename Value>
void note(std::vector<Value>& list, Value value) {
    if (list.size() >= VirtualPhoneRecord::kMost) list.erase(list.begin());
    list.push_back(std::move(value));
}

void removeLast(std::string& text) {
    const auto count = graphemeCount(text);
    if (count > 0) text = firstGraphemes(text, count - 1);
}

}  // namespace

PhoneModel::PhoneModel(const Scenario& scenario, Fonts& fonts)
    : scenario_(scenario), fonts_(fonts), page_(scenario.find(scenario.start)) {
    const PhoneTraits& phone = scenario.phone;
    state_.width = phone.width / phone.scale;
    state_.height = phone.height / phone.scale;
    for (const Page& page : scenario.pages) {
        for (const Item& item : page.items) {
            const auto* rows = std::get_if<RowsItem>(&item);
            if (rows == nullptr) continue;
            for (const Row& row : rows->rows) {
                if (!row.toggle.empty()) state_.toggles.emplace(row.toggle, row.on);
            }
        }
    }
    state_.toggles.insert_or_assign(std::string(kAssistiveTouch), phone.assistiveTouch);
    state_.toggles.insert_or_assign(std::string(kDarkMode), phone.appearance == Appearance::dark);
    locked_ = phone.screen != ScreenPower::awake;
    asleep_ = phone.screen == ScreenPower::asleep;
    showPage(scenario.start);
}

void PhoneModel::receive(const InputEvent& event, TimePoint now) {
    std::visit([&](const auto& any) { receive(any, now); }, event);
}

void PhoneModel::receive(const PointerTo& event, TimePoint now) {
    placePointer(toPoint(event.to), now);
}

void PhoneModel::receive(const PointerBy& event, TimePoint now) {
    const Point from = pointer_.value_or(Point{state_.width / 2, state_.height / 2});
    placePointer({from.x + accelerated(event.dx), from.y + accelerated(event.dy)}, now);
}

void PhoneModel::placePointer(Point at, TimePoint) {
    const Point place{std::clamp(at.x, 0.0, state_.width), std::clamp(at.y, 0.0, state_.height)};
    ++record_.pointerMoves;
    if (pointer_ != place) ++pointerRevision_;
    pointer_ = place;
    if (touch_) drag(place);
}

void PhoneModel::receive(ButtonEvent event, TimePoint now) {
    if (event == ButtonEvent::up) return release(now);
    press(pointer_.value_or(Point{state_.width / 2, state_.height / 2}), now,
          isOn(kAssistiveTouch));
}

void PhoneModel::receive(const ConsumerEvent& event, TimePoint) {
    note(record_.consumers, event);
    if (asleep_) return wake();
    if (event.usage == kAcHome) goHome();
}

void PhoneModel::receive(const KeyEvent& event, TimePoint) {
    note(record_.keys, event);
    const bool command = (event.modifiers & kCommandKeys) != 0;
    const Shift shift = (event.modifiers & kShiftKeys) != 0 ? Shift::down : Shift::up;
    const auto text =
        command ? std::string_view() : keyText(scenario_.phone.keyboard, event.usage, shift);
    if (record_.typed.size() < kLongestEntry) record_.typed += text;
    if (asleep_) return wake();
    if (locked_) return;
    if (command && event.usage == kKeyH) return goHome();
    if (command && event.usage == kSpace) return openSearch();
    if (command) return;
    if (searching_) return typeIntoSearch(event.usage, text);
    if (!state_.focus.empty()) typeIntoField(event.usage, text);
}

void PhoneModel::openSearch() {
    searching_ = !searching_;
    query_.clear();
    screenChanged();
}

void PhoneModel::typeIntoSearch(std::uint16_t usage, std::string_view text) {
    if (usage == kReturn) {
        const auto found = searchIcons(scenario_, query_);
        if (!found.empty()) perform(found.front()->tap);
        return;
    }
    if (usage == kEscape) searching_ = false;
    if (usage == kBackspace) removeLast(query_);
    if (query_.size() + text.size() <= kLongestEntry) query_ += text;
    screenChanged();
}

void PhoneModel::typeIntoField(std::uint16_t usage, std::string_view text) {
    const FieldItem* field = findField(state_.focus);
    if (field == nullptr) return;
    if (usage == kReturn && field->kind == FieldKind::line) {
        const auto submit = field->submit;
        focus("");
        if (submit) perform(*submit);
        return;
    }
    if (usage == kEscape) return focus("");
    std::string& entry = state_.fields.try_emplace(field->name, field->text).first->second;
    if (usage == kBackspace) removeLast(entry);
    if (entry.size() + text.size() <= kLongestEntry) entry += text;
    screenChanged();
}

void PhoneModel::focus(const std::string& field) {
    state_.focus = field;
    screenChanged();
}

const FieldItem* PhoneModel::findField(std::string_view name) const {
    for (const Item& item : page_->items) {
        const auto* field = std::get_if<FieldItem>(&item);
        if (field != nullptr && field->name == name) return field;
    }
    return nullptr;
}

void PhoneModel::touch(TouchPhase phase, ScreenFraction at, TimePoint now) {
    switch (phase) {
        case TouchPhase::down:
            return press(toPoint(at), now, true);
        case TouchPhase::move:
            return drag(toPoint(at));
        case TouchPhase::up:
            drag(toPoint(at));
            return release(now);
    }
}

void PhoneModel::press(Point at, TimePoint now, bool effective) {
    if (touch_) return;
    Touch touch{.area = {},
                .start = at,
                .last = at,
                .startScroll = scroll_,
                .ignored = !effective || asleep_,
                .dragging = false,
                .since = now};
    if (effective && asleep_) wake();
    if (!touch.ignored) {
        if (const TouchArea* area = display().areaAt(at, scroll_)) touch.area = *area;
    }
    touch_ = std::move(touch);
}

void PhoneModel::drag(Point to) {
    if (!touch_) return;
    touch_->last = to;
    const double dx = to.x - touch_->start.x;
    const double dy = to.y - touch_->start.y;
    if (std::hypot(dx, dy) > kDragStart) touch_->dragging = true;
    if (!touch_->dragging || touch_->ignored || locked_) return;
    if (std::holds_alternative<SlideTarget>(touch_->area.target)) {
        state_.slide = touch_->area.label;
        state_.slideOffset = dx;
        return screenChanged();
    }
    const double scroll = std::clamp(touch_->startScroll - dy, 0.0, scrollEnd());
    if (scroll == scroll_) return;
    scroll_ = scroll;
    screenChanged(false);
}

void PhoneModel::release(TimePoint now) {
    if (!touch_) return;
    const Touch touch = *std::exchange(touch_, std::nullopt);
    using Kind = VirtualTouch::Kind;
    const bool ignored = touch.ignored || (locked_ && !touch.dragging);
    note(record_.touches, {.kind = ignored          ? Kind::ignored
                                   : touch.dragging ? Kind::drag
                                                    : Kind::tap,
                           .from = toFraction(touch.start),
                           .to = toFraction(touch.last),
                           .page = page_->name,
                           .hit = touch.area.label,
                           .seconds = toSeconds(now - touch.since)});
    if (!ignored) finishTouch(touch);
}

bool PhoneModel::endedAsHomeSwipe(const Touch& touch) const {
    return touch.start.y >= state_.height - kHomeSwipeZone &&
           touch.start.y - touch.last.y >= kHomeSwipe;
}

void PhoneModel::finishTouch(const Touch& touch) {
    if (locked_) {
        if (touch.start.y - touch.last.y < kHomeSwipe) return;
        if (!scenario_.phone.passcode) return unlock();
        prompt_ = LockPrompt::passcode;
        return screenChanged();
    }
    if (endedAsHomeSwipe(touch)) return goHome();
    if (!touch.dragging) return activate(touch.area);
    const auto* slide = std::get_if<SlideTarget>(&touch.area.target);
    if (slide == nullptr) return;
    const bool done = touch.last.x - touch.start.x >= kSlideDone * slide->distance;
    state_.slide.clear();
    state_.slideOffset = 0;
    screenChanged();
    if (done) perform(slide->done);
}

void PhoneModel::activate(const TouchArea& area) {
    if (const auto* action = std::get_if<Action>(&area.target)) return perform(*action);
    if (const auto* toggle = std::get_if<ToggleTarget>(&area.target)) return flip(toggle->name);
    if (const auto* field = std::get_if<FieldTarget>(&area.target)) return focus(field->name);
    if (std::holds_alternative<SearchTarget>(area.target)) return openSearch();
    if (const auto* result = std::get_if<SearchResultTarget>(&area.target)) {
        return perform(result->open);
    }
    if (!state_.focus.empty()) focus("");
}

void PhoneModel::perform(const Action& action) {
    if (!action.count.empty()) ++record_.counts[action.count];
    if (action.trouble != Trouble::none) troubles_.push_back(action);
    if (!action.go.empty()) showPage(action.go);
}

void PhoneModel::doubleClickSideButton() {
    if (!asleep_ && !locked_ && page_->sideButton) perform(*page_->sideButton);
}

void PhoneModel::flip(const std::string& toggle) {
    bool& on = state_.toggles[toggle];
    on = !on;
    ++pointerRevision_;
    screenChanged();
}

bool PhoneModel::isOn(std::string_view toggle) const {
    const auto found = state_.toggles.find(toggle);
    return found != state_.toggles.end() && found->second;
}

void PhoneModel::goHome() {
    ++record_.homes;
    if (!locked_ && !asleep_) showPage(scenario_.home);
}

void PhoneModel::showPage(std::string_view name) {
    const Page* page = scenario_.find(name);
    if (page == nullptr) return;
    page_ = page;
    ++visit_;
    scroll_ = 0;
    searching_ = false;
    state_.slide.clear();
    state_.focus.clear();
    for (const Item& item : page->items) {
        const auto* field = std::get_if<FieldItem>(&item);
        if (field != nullptr && field->focused) state_.focus = field->name;
    }
    screenChanged();
}

void PhoneModel::sleep() {
    asleep_ = true;
    lock();
}

void PhoneModel::wake() {
    asleep_ = false;
    screenChanged();
}

void PhoneModel::lock() {
    locked_ = true;
    prompt_ = LockPrompt::none;
    searching_ = false;
    screenChanged();
}

void PhoneModel::unlock() {
    asleep_ = false;
    locked_ = false;
    screenChanged();
}

void PhoneModel::rotate() {
    landscape_ = !landscape_;
    std::swap(state_.width, state_.height);
    scroll_ = 0;
    pointer_.reset();
    screenChanged();
}

void PhoneModel::screenChanged(bool relayout) {
    if (relayout) display_.reset();
    ++screenRevision_;
}

const DisplayList& PhoneModel::display() {
    if (display_) return *display_;
    state_.appearance = isOn(kDarkMode) ? Appearance::dark : Appearance::light;
    if (locked_) {
        display_ = layOutLockScreen(scenario_.phone, state_, prompt_);
    } else if (searching_) {
        display_ = layOutSearch(scenario_.phone, state_, query_, searchIcons(scenario_, query_));
    } else {
        display_ = layOutPage(scenario_, *page_, state_, fonts_);
    }
    return *display_;
}

double PhoneModel::scrollEnd() { return std::max(display().contentHeight - state_.height, 0.0); }

PhoneModel::Look PhoneModel::look() {
    Look look{.display = asleep_ ? nullptr : &display(),
              .width = state_.width,
              .height = state_.height,
              .scroll = locked_ || searching_ ? 0 : scroll_,
              .pointer = {}};
    if (!asleep_ && isOn(kAssistiveTouch)) look.pointer = pointer_;
    return look;
}

const VirtualPhoneRecord& PhoneModel::record() {
    record_.page = page_->name;
    record_.screen = asleep_   ? ScreenPower::asleep
                     : locked_ ? ScreenPower::locked
                               : ScreenPower::awake;
    record_.searching = searching_;
    record_.query = query_;
    record_.fields = state_.fields;
    record_.toggles = state_.toggles;
    record_.scroll = scroll_;
    record_.landscape = landscape_;
    return record_;
}

Point PhoneModel::toPoint(ScreenFraction at) const {
    return {at.x * state_.width, at.y * state_.height};
}

ScreenFraction PhoneModel::toFraction(Point at) const {
    return {at.x / state_.width, at.y / state_.height};
}

}  // namespace tandrel
