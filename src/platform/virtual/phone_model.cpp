#include "platform/virtual/phone_model.h"

#include <algorithm>
#include <cmath>

#include "platform/virtual/keyboard_layout.h"
#include "platform/virtual/text_entry.h"

namespace tandrel {
namespace {

// Slow motion is finer and fast motion coarser than the counts, as pointers do.
double accelerated(int counts) { return counts * (0.6 + std::abs(counts) / 64.0); }

template <typename Value>
void note(std::vector<Value>& list, Value value) {
    if (list.size() >= VirtualPhoneRecord::kMost) list.erase(list.begin());
    list.push_back(std::move(value));
}

}  // namespace

PhoneModel::PhoneModel(const Scenario& scenario, Fonts& fonts)
    : scenario_(scenario), fonts_(fonts), page_(scenario.find(scenario.start)) {
    const PhoneTraits& phone = scenario.phone;
    state_.width = phone.width / phone.scale;
    state_.height = phone.height / phone.scale;
    state_.toggles = scenario.switches();
    locked_ = phone.screen != ScreenPower::awake;
    asleep_ = phone.screen == ScreenPower::asleep;
    showPage(scenario.start);
}

void PhoneModel::receive(const InputEvent& event, TimePoint now) {
    std::visit([&](const auto& any) { handle(any, now); }, event);
}

void PhoneModel::handle(const PointerTo& event, TimePoint) { placePointer(toPoint(event.to)); }

void PhoneModel::handle(const PointerBy& event, TimePoint) {
    const Point from = pointerPlace();
    placePointer({from.x + accelerated(event.dx), from.y + accelerated(event.dy)});
}

void PhoneModel::placePointer(Point at) {
    const Point place{std::clamp(at.x, 0.0, state_.width), std::clamp(at.y, 0.0, state_.height)};
    ++record_.pointerMoves;
    if (pointer_ != place) ++pointerRevision_;
    pointer_ = place;
    drag(place);
}

Point PhoneModel::pointerPlace() const {
    return pointer_.value_or(Point{state_.width / 2, state_.height / 2});
}

void PhoneModel::handle(ButtonEvent event, TimePoint now) {
    using Effect = TouchGesture::Effect;
    if (event == ButtonEvent::up) return release(now);
    press(pointerPlace(), now, isOn(kAssistiveTouchSwitch) ? Effect::taken : Effect::ignored);
}

void PhoneModel::handle(const ConsumerEvent& event, TimePoint) {
    note(record_.consumers, event);
    if (asleep_) return wake();
    if (event.usage == kAcHome) goHome();
}

void PhoneModel::handle(const KeyEvent& event, TimePoint) {
    note(record_.keys, event);
    const bool command = (event.modifiers & kCommandKeys) != 0;
    const Shift shift = (event.modifiers & kShiftKeys) != 0 ? Shift::down : Shift::up;
    const auto text =
        command ? std::string_view() : keyText(scenario_.phone.keyboard, event.usage, shift);
    if (record_.typed.size() < kLongestEntry) record_.typed += text;
    if (asleep_) return wake();
    if (locked_) return;
    if (command && event.usage == kHKey) return goHome();
    if (command && event.usage == kSpaceKey) return toggleSearch();
    if (command) return;
    if (searching_) return typeIntoSearch(event.usage, text);
    typeIntoField(event.usage, text);
}

void PhoneModel::toggleSearch() {
    searching_ = !searching_;
    query_.clear();
    screenChanged();
}

void PhoneModel::typeIntoSearch(std::uint16_t usage, std::string_view text) {
    if (usage == kEscapeKey) return toggleSearch();
    if (usage == kReturnKey) {
        const auto found = searchIcons(scenario_, query_);
        if (!found.empty()) openFromSearch(found.front()->tap);
        return;
    }
    enterKey(query_, usage, text);
    screenChanged();
}

void PhoneModel::openFromSearch(const Action& action) {
    if (searching_) toggleSearch();
    perform(action);
}

void PhoneModel::typeIntoField(std::uint16_t usage, std::string_view text) {
    const FieldItem* field = page_->findField(state_.focus);
    if (field == nullptr) return;
    if (usage == kEscapeKey) return focus("");
    if (usage == kReturnKey && field->kind == FieldKind::line) {
        focus("");
        if (field->submit) perform(*field->submit);
        return;
    }
    enterKey(state_.fields.try_emplace(field->name, field->text).first->second, usage, text);
    screenChanged();
}

void PhoneModel::focus(const std::string& field) {
    state_.focus = field;
    screenChanged();
}

void PhoneModel::touch(TouchPhase phase, ScreenFraction at, TimePoint now) {
    if (phase == TouchPhase::down) return press(toPoint(at), now, TouchGesture::Effect::taken);
    drag(toPoint(at));
    if (phase == TouchPhase::up) release(now);
}

void PhoneModel::press(Point at, TimePoint now, TouchGesture::Effect effect) {
    if (touch_) return;
    const bool wakes = asleep_ && effect == TouchGesture::Effect::taken;
    TouchGesture::Beginning beginning{.at = at,
                                      .time = now,
                                      .effect = asleep_ ? TouchGesture::Effect::ignored : effect,
                                      .area = {},
                                      .page = page_->name,
                                      .visit = visit_,
                                      .scroll = scroll_};
    if (wakes) wake();
    if (beginning.effect == TouchGesture::Effect::taken) {
        if (const TouchArea* area = display().areaAt(at, scroll_)) beginning.area = *area;
    }
    touch_.emplace(std::move(beginning));
}

void PhoneModel::drag(Point to) {
    if (!touch_) return;
    touch_->moveTo(to);
    if (!touch_->isDrag() || !isCurrent(*touch_) || locked_ || searching_) return;
    const auto& beginning = touch_->beginning();
    if (std::holds_alternative<SlideTarget>(beginning.area.target)) {
        state_.slide = beginning.area.label;
        state_.slideOffset = touch_->right();
        return screenChanged();
    }
    const double scroll = std::clamp(beginning.scroll + touch_->up(), 0.0, scrollEnd());
    if (scroll == scroll_) return;
    scroll_ = scroll;
    ++screenRevision_;
}

// The screen took it and still shows what was touched.
bool PhoneModel::isCurrent(const TouchGesture& touch) const {
    return touch.isTaken() && touch.beginning().visit == visit_ && !asleep_;
}

void PhoneModel::release(TimePoint now) {
    if (!touch_) return;
    const TouchGesture touch = *touch_;
    touch_.reset();
    const auto& beginning = touch.beginning();
    using Kind = VirtualTouch::Kind;
    VirtualTouch noted{.kind = touch.isDrag() ? Kind::drag : Kind::tap,
                       .from = toFraction(beginning.at),
                       .to = toFraction(touch.last()),
                       .page = beginning.page,
                       .hit = beginning.area.label,
                       .seconds = toSeconds(now - beginning.time)};
    const bool takenWhenLocked = touch.isSwipeUp();
    if (!isCurrent(touch) || (locked_ && !takenWhenLocked)) noted.kind = Kind::ignored;
    const bool ignored = noted.kind == Kind::ignored;
    note(record_.touches, std::move(noted));
    endSlide();
    if (!ignored) finish(touch);
}

void PhoneModel::endSlide() {
    if (state_.slide.empty()) return;
    state_.slide.clear();
    state_.slideOffset = 0;
    screenChanged();
}

void PhoneModel::finish(const TouchGesture& touch) {
    if (locked_) {
        if (!scenario_.phone.passcode) return unlock();
        prompt_ = LockPrompt::passcode;
        return screenChanged();
    }
    if (touch.isHomeSwipe(state_.height)) return goHome();
    const TouchArea& area = touch.beginning().area;
    if (!touch.isDrag()) return activate(area);
    const auto* slide = std::get_if<SlideTarget>(&area.target);
    if (slide != nullptr && touch.isSlideDone(*slide)) perform(slide->done);
}

void PhoneModel::activate(const TouchArea& area) {
    if (const auto* action = std::get_if<Action>(&area.target)) return perform(*action);
    if (const auto* toggle = std::get_if<ToggleTarget>(&area.target)) return flip(toggle->name);
    if (const auto* field = std::get_if<FieldTarget>(&area.target)) return focus(field->name);
    if (std::holds_alternative<SearchTarget>(area.target)) return toggleSearch();
    if (const auto* result = std::get_if<SearchResultTarget>(&area.target)) {
        return openFromSearch(result->open);
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

void PhoneModel::screenChanged() {
    display_.reset();
    ++screenRevision_;
}

const DisplayList& PhoneModel::display() {
    if (display_) return *display_;
    state_.appearance = isOn(kDarkModeSwitch) ? Appearance::dark : Appearance::light;
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
    if (!asleep_ && isOn(kAssistiveTouchSwitch)) look.pointer = pointer_;
    return look;
}

std::optional<ScreenFraction> PhoneModel::find(std::string_view label) {
    if (asleep_) return std::nullopt;
    const auto place = display().find(label, scroll_, state_.height);
    return place ? std::optional(toFraction(*place)) : std::nullopt;
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
