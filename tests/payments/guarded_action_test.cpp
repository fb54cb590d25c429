#include "payments/guarded_action.h"

#include <gtest/gtest.h>

#include "payments/gate_fixture.h"

namespace tandrel {
namespace {

using PaymentGuard::Action;
using PaymentGuard::Kind;

constexpr PaymentGuard::FrameSize kScreen{1000, 2000};
constexpr PlaceOnScreen kPointer{0.25, 0.75};

// A keyboard on which a line feed presses Return and a space the space bar.
std::optional<std::uint8_t> keyUsage(std::string_view key) {
    if (key == "\n" || key == "Enter") return 0x28;
    if (key == " " || key == "Space") return 0x2C;
    if (key == "keypad") return 0x58;
    if (key == "tab") return 0x2B;
    return std::nullopt;
}

std::optional<GuardedAction> map(const std::string& path, const std::string& body,
                                 PaymentGuard::FrameSize screen = kScreen,
                                 const KeyUsage& keyboard = keyUsage) {
    const HTTPRequest request{
        .method = "POST", .path = path, .query = {}, .body = Json::parse(body), .clientGone = {}};
    return guardedAction(request, screen, kPointer, keyboard);
}

TEST(GuardedAction, PointsAreFractionsOfThePhonesScreen) {
    const auto at = [](std::optional<double> x, std::optional<double> y) {
        return GuardedAction{.action = {.kind = Kind::tap, .x = x, .y = y}};
    };
    const std::tuple<const char*, const char*, GuardedAction> cases[] = {
        {"fractions", R"({"x":0.5,"y":1,"fraction":true})", at(0.5, 1)},
        {"pixels", R"({"x":500,"y":500})", at(0.5, 0.25)},
        {"fraction false", R"({"x":500,"y":500,"fraction":false})", at(0.5, 0.25)},
        {"fraction in words is no fraction", R"({"x":0.5,"y":0.5,"fraction":"true"})",
         at(0.0005, 0.00025)},
        {"beyond the edges, where the pointer stops", R"({"x":-3,"y":7,"fraction":true})",
         at(0, 1)},
        {"text", R"({"x":"10","y":10})", at({}, {})},
        {"one missing", R"({"x":10})", at({}, {})},
    };
    for (const auto& [name, body, expected] : cases) EXPECT_EQ(map("/tap", body), expected) << name;
    EXPECT_EQ(map("/tap", R"({"x":500,"y":500})", {}), at({}, {})) << "size of the screen unknown";
    EXPECT_EQ(map("/tap", R"({"x":0.5,"y":0.5,"fraction":true})", {}), at(0.5, 0.5));
}

TEST(GuardedAction, RequestsBecomeActions) {
    const auto enter = [](bool quiet) {
        return GuardedAction{.action = {.kind = Kind::enter}, .quiet = quiet};
    };
    const auto type = [](std::string text, bool quiet) {
        return GuardedAction{.action = {.kind = Kind::type, .text = text}, .quiet = quiet};
    };
    const auto click = [](bool strays) {
        return GuardedAction{.action = {.kind = Kind::tap, .x = 0.25, .y = 0.75}, .strays = strays};
    };
    const std::optional<GuardedAction> none;
    const std::tuple<const char*, const char*, std::optional<GuardedAction>> cases[] = {
        {"/swipe", R"({"x1":100,"y1":200,"x2":900,"y2":200})",
         GuardedAction{.action = {.kind = Kind::swipe, .x = 0.1, .y = 0.1, .x2 = 0.9, .y2 = 0.1}}},
        {"/swipe", R"({"x1":1,"y1":0.5,"x2":9,"y2":0.5,"fraction":true})",
         GuardedAction{.action = {.kind = Kind::swipe, .x = 1, .y = 0.5, .x2 = 1, .y2 = 0.5}}},
        {"/nudge", R"({"click":true})", click(false)},
        {"/nudge", R"({"click":true,"dx":0,"dy":0})", click(false)},
        {"/nudge", R"({"click":true,"dx":0,"dy":-1})", click(true)},
        {"/nudge", R"({"click":true,"dx":"5"})", click(true)},
        {"/nudge", R"({"click":false,"dx":5})", none},
        {"/nudge", R"({"click":"true"})", none},
        {"/nudge", R"({"dx":5,"dy":5})", none},
        {"/type", R"({"text":"hello"})", type("hello", true)},
        {"/type", R"({"text":"hel\nlo"})", type("hel\nlo", false)},
        {"/type", R"({"text":"hello\r"})", type("hello\r", false)},
        {"/type", R"({})", type("", true)},
        {"/type", R"({"text":7})", type("", true)},
        {"/key", R"({"key":"return"})", enter(false)},
        {"/key", R"({"key":"ENTER"})", enter(false)},
        {"/key", R"({"key":"\n"})", enter(false)},
        {"/key", R"({"key":"keypad"})", enter(false)},
        {"/key", R"({"key":"return","modifiers":["cmd"]})", enter(false)},
        {"/key", R"({"key":"space"})", enter(true)},
        {"/key", R"({"key":"SPACE","modifiers":[]})", enter(true)},
        {"/key", R"({"key":" "})", enter(true)},
        {"/key", R"({"key":" ","modifiers":"shift"})", enter(true)},
        {"/key", R"({"key":"space","modifiers":[1]})", enter(true)},
        {"/key", R"({"key":"space","modifiers":["cmd"]})", none},
        {"/key", R"({"key":" ","modifiers":["cmd"]})", none},
        {"/key", R"({"key":"tab"})", none},
        {"/key", R"({"key":"a"})", none},
        {"/key", R"({"key":40})", none},
        {"/key", R"({})", none},
        {"/move", R"({"x":1,"y":1})", none},
        {"/home", R"({})", none},
        {"/Tap", R"({"x":1,"y":1})", none},
    };
    for (const auto& [path, body, expected] : cases)
        EXPECT_EQ(map(path, body), expected) << path << body;
}

TEST(GuardedAction, KeysAreKnownByNameWithoutAKeyboard) {
    EXPECT_TRUE(map("/key", R"({"key":"Return"})", kScreen, {}));
    EXPECT_FALSE(map("/key", R"({"key":"\n"})", kScreen, {}));
}

TEST(GuardedAction, UnreadAreasMatterNearTheAction) {
    GateFrame frame = frameOf({"Notes"});  // 600 x 1300; twice a label's reach is 24 pixels
    frame.unread = {{300, 600, 100, 50}};
    const auto tap = [](double px, double py) {
        return GuardedAction{.action = {.kind = Kind::tap, .x = px / 600, .y = py / 1300}};
    };
    const auto swipe = [](double px, double py, double px2, double py2) {
        return GuardedAction{.action = {Kind::swipe, px / 600, py / 1300, px2 / 600, py2 / 1300}};
    };
    const std::tuple<const char*, GuardedAction, bool> cases[] = {
        {"inside", tap(350, 620), true},
        {"at the reach", tap(276.1, 620), true},
        {"beyond it", tap(275.9, 620), false},
        {"below, at the reach", tap(350, 673.9), true},
        {"below, beyond it", tap(350, 674.1), false},
        {"a slider across it", swipe(50, 620, 550, 620), true},
        {"a slider backwards across it", swipe(550, 620, 50, 620), true},
        {"a slider beside it", swipe(50, 800, 550, 800), false},
        {"a scroll across it", swipe(350, 1000, 350, 200), false},
        {"a scroll that begins on it", swipe(350, 620, 350, 200), true},
        {"a key on a screen without money", {.action = {.kind = Kind::enter}}, false},
    };
    for (const auto& [name, action, depends] : cases)
        EXPECT_EQ(dependsOnUnread(action, frame), depends) << name;

    const GuardedAction enter{.action = {.kind = Kind::enter}};
    for (const char* text : {"€5", "Your subscription", "Passcode"}) {
        frame.lines[0].text = text;
        EXPECT_TRUE(dependsOnUnread(enter, frame)) << text;
    }
    EXPECT_FALSE(dependsOnUnread({.action = {.kind = Kind::enter}, .quiet = true}, frame));
    EXPECT_TRUE(dependsOnUnread({.action = tap(10, 10).action, .strays = true}, frame));
    frame.unread.clear();
    EXPECT_FALSE(dependsOnUnread(enter, frame));
}

// --- what the recogniser gave

TEST(ScreenReading, TakesOverWhatWasRead) {
    const auto picture = PixelBuffer::make(300, 600, [](std::uint8_t*, int) {});
    const UnreadArea unread{1, 2, 3, 4};
    const auto reading = screenReading(
        picture,
        ReadText{{{" Total €5 ", 0.2, 10, 20, 30, 40}, {"Confirm", 0.9, 5, 6, 7, 8}}, {unread}},
        {1206, 2622});
    const auto& frame = std::get<GateFrame>(reading);
    EXPECT_EQ(frame.lines, (std::vector<PaymentGuard::Line>{{"Total €5", 10, 20, 30, 40},
                                                            {"Confirm", 5, 6, 7, 8}}));
    EXPECT_EQ(frame.size, (PaymentGuard::FrameSize{300, 600}));
    EXPECT_EQ(frame.screen, (PaymentGuard::FrameSize{1206, 2622}));
    EXPECT_EQ(frame.unread, std::vector<UnreadArea>{unread});
    EXPECT_TRUE(frame.picture.sharesPixelsWith(picture));
}

TEST(ScreenReading, WhatCannotBeTrustedIsUnread) {
    const auto picture = PixelBuffer::make(3, 6, [](std::uint8_t*, int) {});
    const auto read = [&](Result<ReadText> text) { return screenReading(picture, text, {}); };
    EXPECT_TRUE(std::holds_alternative<Unreadable>(read(fail("broken"))));
    EXPECT_TRUE(std::holds_alternative<GateFrame>(read(ReadText{})));

    const TextRecord longLine{std::string(501, '1'), 1, 10, 20, 30, 40};
    const auto one = read(ReadText{{longLine, {"Confirm", 1, 0, 0, 1, 1}}, {}});
    EXPECT_EQ(std::get<GateFrame>(one).lines.size(), 1u);
    EXPECT_EQ(std::get<GateFrame>(one).unread, (std::vector<UnreadArea>{{10, 20, 30, 40}}));

    const ReadText tooMuch{std::vector<TextRecord>(100, {std::string(400, '1'), 1, 0, 0, 1, 1}),
                           {}};
    EXPECT_TRUE(std::holds_alternative<Unreadable>(read(tooMuch)));
}

}  // namespace
}  // namespace tandrel
