#include "platform/virtual/phone_model.h"

#include <gmock/gmock.h>

#include "platform/virtual/virtual_support.h"

namespace tandrel {
namespace {

using test::scenario;
using Kind = VirtualTouch::Kind;

const std::string kPages = R"([
  {"name": "home", "kind": "home", "items": [{"kind": "icons", "icons": [
    {"label": "Settings", "tap": {"go": "settings"}},
    {"label": "Slides", "tap": {"go": "slides"}},
    {"label": "Web Shop", "tap": {"go": "notes"}},
    {"label": "Notes", "tap": {"go": "notes"}}]}]},
  {"name": "settings", "title": "Settings", "items": [{"kind": "rows", "rows": [
    {"text": "General", "tap": {"go": "general"}},
    {"text": "AssistiveTouch", "toggle": "assistiveTouch"},
    {"text": "Airplane Mode", "toggle": "airplane", "on": true}]}]},
  {"name": "general", "title": "General", "back": "settings", "items": [
    {"kind": "space", "height": 1500}, {"kind": "button", "text": "Reset", "tap": {"count": "resets"}}]},
  {"name": "notes", "items": [
    {"kind": "field", "name": "Title", "submit": {"count": "submits"}},
    {"kind": "field", "name": "Body", "style": "area", "text": "é", "focused": true}]},
  {"name": "slides", "items": [{"kind": "slide", "text": "Slide to pay", "done": {"count": "paid"}}]},
  {"name": "sheet", "kind": "sheet", "over": "notes", "title": "Pay", "sideButton": {"count": "paid"},
   "items": [{"kind": "button", "text": "Cancel", "tap": {"go": "home"}}]}
])";

constexpr std::uint16_t kReturn = 0x28;
constexpr std::uint16_t kBackspace = 0x2A;

class PhoneModelTest : public testing::Test {
 protected:
    void start(const std::string& phone = "") {
        model_.reset();
        scenario_ = scenario(kPages, phone);
        model_.emplace(scenario_, fonts_);
    }
    void SetUp() override { start(); }

    void click(const std::string& label) { clickAt(place(label)); }
    void clickAt(ScreenFraction at) {
        model_->receive(PointerTo{at}, {});
        model_->receive(ButtonEvent::down, {});
        model_->receive(ButtonEvent::up, {});
    }
    void dragPointer(ScreenFraction from, ScreenFraction to) {
        model_->receive(PointerTo{from}, {});
        model_->receive(ButtonEvent::down, {});
        model_->receive(PointerTo{to}, {});
        model_->receive(ButtonEvent::up, {});
    }
    void swipe(ScreenFraction from, ScreenFraction to) {
        model_->touch(TouchPhase::down, from, {});
        model_->touch(TouchPhase::up, to, {});
    }
    void key(std::uint16_t usage, std::uint8_t modifiers = 0) {
        model_->receive(KeyEvent{usage, modifiers}, {});
    }
    void type(const std::string& lowerCase) {
        for (const char c : lowerCase) key(static_cast<std::uint16_t>(c - 'a' + 0x04));
    }
    ScreenFraction place(const std::string& label) {
        const auto place = model_->find(label);
        EXPECT_TRUE(place) << label << " is not on the screen";
        return place.value_or(ScreenFraction{});
    }
    const VirtualPhoneRecord& record() { return model_->record(); }
    std::string page() { return record().page; }

    Fonts fonts_;
    Scenario scenario_;
    std::optional<PhoneModel> model_;
};

TEST_F(PhoneModelTest, ClickOpensWhatItHits) {
    click("Settings");
    EXPECT_EQ(page(), "settings");
    click("General");
    EXPECT_EQ(page(), "general");
    click("Back");
    EXPECT_EQ(page(), "settings");
    ASSERT_EQ(record().touches.size(), 3u);
    EXPECT_EQ(record().touches[1].hit, "General");
    EXPECT_EQ(record().touches[1].page, "settings");
    clickAt({0.5, 0.6});
    EXPECT_EQ(page(), "settings");
    EXPECT_EQ(record().touches[3].hit, "") << "beside everything";
}

TEST_F(PhoneModelTest, PointerWithoutAssistiveTouchNeitherShowsNorClicks) {
    start(R"("assistiveTouch": false)");
    click("Settings");
    EXPECT_EQ(page(), "home");
    EXPECT_EQ(record().touches.at(0).kind, Kind::ignored);
    EXPECT_FALSE(model_->look().pointer);
}

TEST_F(PhoneModelTest, AssistiveTouchCanBeSwitchedOffWithThePointerAndOnWithAFinger) {
    model_->showPage("settings");
    click("Airplane Mode");
    EXPECT_FALSE(record().toggles.at("airplane"));
    click("AssistiveTouch");
    EXPECT_FALSE(record().toggles.at("assistiveTouch"));
    click("AssistiveTouch");
    EXPECT_FALSE(record().toggles.at("assistiveTouch"));
    swipe(place("AssistiveTouch"), place("AssistiveTouch"));
    EXPECT_TRUE(record().toggles.at("assistiveTouch"));
}

TEST_F(PhoneModelTest, DragScrollsUntilTheEndAndIsNoTap) {
    model_->showPage("general");
    EXPECT_FALSE(model_->find("Reset"));
    dragPointer({0.5, 0.7}, {0.5, 0.2});
    EXPECT_NEAR(record().scroll, 437, 0.5);  // half of 874 points
    for (int i = 0; i < 5; ++i) dragPointer({0.5, 0.7}, {0.5, 0.2});
    const double end = record().scroll;
    dragPointer({0.5, 0.7}, {0.5, 0.2});
    EXPECT_EQ(record().scroll, end);
    click("Reset");
    EXPECT_EQ(record().counts.at("resets"), 1);
    EXPECT_EQ(record().touches.front().kind, Kind::drag);
}

TEST_F(PhoneModelTest, TouchThatWandersLittleIsATap) {
    const auto at = place("Settings");
    swipe(at, {at.x + 8 / 402.0, at.y});
    EXPECT_EQ(page(), "settings");
    model_->goHome();
    swipe(at, {at.x + 14 / 402.0, at.y});
    EXPECT_EQ(page(), "home");
}

TEST_F(PhoneModelTest, RelativeMotionStartsInTheMiddleAndStopsAtTheEdge) {
    model_->receive(PointerBy{10, 0}, {});
    ASSERT_TRUE(model_->look().pointer);
    EXPECT_GT(model_->look().pointer->x, 201);
    EXPECT_EQ(model_->look().pointer->y, 437);
    for (int i = 0; i < 10; ++i) model_->receive(PointerBy{-127, 127}, {});
    EXPECT_EQ(*model_->look().pointer, (Point{0, 874}));
}

TEST_F(PhoneModelTest, TypesIntoTheFocusedFieldAndTakesWholeCharactersAway) {
    model_->showPage("notes");
    type("hi");
    key(kReturn);
    key(0x0B, 2);
    EXPECT_EQ(record().fields.at("Body"), "éhi\nH");
    EXPECT_EQ(record().typed, "hi\nH");
    for (int i = 0; i < 6; ++i) key(kBackspace);
    EXPECT_EQ(record().fields.at("Body"), "");
    click("Title");
    type("abc");
    key(kReturn);
    type("d");
    EXPECT_EQ(record().fields.at("Title"), "abc") << "a line is submitted and has no focus then";
    EXPECT_EQ(record().counts.at("submits"), 1);
}

TEST_F(PhoneModelTest, GermanKeyboardSwapsYAndZ) {
    start(R"("keyboard": "german")");
    model_->showPage("notes");
    type("yz");
    key(0x2D);
    EXPECT_EQ(record().fields.at("Body"), "ézyß");
}

TEST_F(PhoneModelTest, SearchFindsBeginningsOfWordsAndOpensTheBest) {
    key(0x2C, 8);
    EXPECT_TRUE(record().searching);
    type("s");
    EXPECT_TRUE(model_->find("Settings"));
    EXPECT_TRUE(model_->find("Web Shop"));
    EXPECT_FALSE(model_->find("Notes"));
    EXPECT_LT(place("Settings").y, place("Slides").y);
    EXPECT_LT(place("Slides").y, place("Web Shop").y);
    type("h");
    key(kReturn);
    EXPECT_EQ(page(), "notes");
    EXPECT_FALSE(record().searching);
}

TEST_F(PhoneModelTest, SearchWithoutAMatchStaysOpenAndEscapeClosesIt) {
    key(0x2C, 8);
    type("qq");
    key(kReturn);
    EXPECT_TRUE(record().searching);
    key(kBackspace);
    EXPECT_EQ(record().query, "q");
    key(0x29);
    EXPECT_FALSE(record().searching);
    key(0x2C, 8);
    EXPECT_EQ(record().query, "");
}

TEST_F(PhoneModelTest, EveryWayHome) {
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"AC Home", [&] { model_->receive(ConsumerEvent{0x223}, {}); }},
        {"Cmd+H", [&] { key(0x0B, 8); }},
        {"right Cmd+H", [&] { key(0x0B, 0x80); }},
        {"swipe from the bottom", [&] { swipe({0.5, 0.99}, {0.5, 0.6}); }},
    };
    int homes = 0;
    for (const auto& [name, go] : ways) {
        model_->showPage("general");
        go();
        EXPECT_EQ(page(), "home") << name;
        EXPECT_EQ(record().homes, ++homes) << name;
    }
    model_->showPage("general");
    key(0x0B);
    model_->receive(ConsumerEvent{0xE9}, {});
    EXPECT_EQ(page(), "general") << "H alone, and louder";
}

TEST_F(PhoneModelTest, SlideActsOnlyAtItsEnd) {
    model_->showPage("slides");
    const ScreenFraction knob{48 / 402.0, place("Slide to pay").y};
    dragPointer(knob, {knob.x + 0.5, knob.y});
    EXPECT_FALSE(record().counts.contains("paid"));
    dragPointer({0.7, knob.y}, {0.99, knob.y});
    EXPECT_FALSE(record().counts.contains("paid")) << "not begun on the knob";
    clickAt(knob);
    EXPECT_FALSE(record().counts.contains("paid"));
    dragPointer(knob, {knob.x + 0.75, knob.y});
    EXPECT_EQ(record().counts.at("paid"), 1);
}

TEST_F(PhoneModelTest, SheetKeepsThePageUnderneathOutOfReach) {
    model_->showPage("notes");
    const auto title = place("Title");
    model_->showPage("sheet");
    EXPECT_FALSE(model_->find("Title"));
    clickAt(title);
    type("x");
    EXPECT_FALSE(record().fields.contains("Title"));
    model_->doubleClickSideButton();
    EXPECT_EQ(record().counts.at("paid"), 1);
    click("Cancel");
    model_->doubleClickSideButton();
    EXPECT_EQ(record().counts.at("paid"), 1);
}

TEST_F(PhoneModelTest, LockedPhoneTakesNothingButASwipeUp) {
    model_->lock();
    clickAt({0.2, 0.15});
    key(0x2C, 8);
    model_->receive(ConsumerEvent{0x223}, {});
    EXPECT_EQ(record().screen, ScreenPower::locked);
    EXPECT_FALSE(record().searching);
    EXPECT_EQ(record().touches.at(0).kind, Kind::ignored);
    swipe({0.5, 0.9}, {0.5, 0.3});
    EXPECT_EQ(record().screen, ScreenPower::locked) << "a passcode is asked for";
    model_->unlock();
    EXPECT_EQ(record().screen, ScreenPower::awake);
    start(R"("screen": "locked", "passcode": false)");
    swipe({0.5, 0.9}, {0.5, 0.85});
    EXPECT_EQ(record().screen, ScreenPower::locked) << "a short one";
    swipe({0.5, 0.9}, {0.5, 0.3});
    EXPECT_EQ(record().screen, ScreenPower::awake);
}

TEST_F(PhoneModelTest, SleepIsDarkAndAnythingPressedWakesItLocked) {
    const std::function<void()> wakers[] = {
        [&] { key(0x04); }, [&] { model_->receive(ConsumerEvent{0x223}, {}); },
        [&] { clickAt({0.5, 0.5}); }, [&] { swipe({0.5, 0.5}, {0.5, 0.5}); }};
    for (const auto& wake : wakers) {
        model_->sleep();
        EXPECT_EQ(model_->look().display, nullptr);
        wake();
        EXPECT_NE(model_->look().display, nullptr);
        EXPECT_EQ(record().screen, ScreenPower::locked);
        model_->unlock();
    }
    EXPECT_EQ(page(), "home");
}

TEST_F(PhoneModelTest, RotatedScreenIsHitWhereItIsDrawn) {
    model_->rotate();
    EXPECT_EQ(model_->look().width, 874);
    EXPECT_TRUE(record().landscape);
    click("Notes");
    EXPECT_EQ(page(), "notes");
}

TEST_F(PhoneModelTest, OddNumbersDoNoHarm) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    model_->showPage("general");
    for (const double x : {nan, infinite, -infinite, -5.0, 5.0}) {
        swipe({x, 0.5}, {0.5, x});
        swipe({0.5, 0.5}, {x, x});
    }
    model_->receive(ButtonEvent::up, {});
    EXPECT_EQ(page(), "general");
    EXPECT_TRUE(std::isfinite(record().scroll));
}

TEST_F(PhoneModelTest, RecordIsBounded) {
    for (int i = 0; i < 10'050; ++i) key(0x04);
    EXPECT_EQ(record().keys.size(), VirtualPhoneRecord::kMost);
    EXPECT_LE(record().typed.size(), 10'000u);
}

}  // namespace
}  // namespace tandrel
