#include "app/phone_test.h"

#include <algorithm>

#include <gmock/gmock.h>

#include "base/base64.h"
#include "base/mutex.h"
#include "http/server.h"
#include "image/pictures.h"
#include "screen/snapshot.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

using Mark = PhoneTest::Mark;

// An engine and an AirPlay server in one, with a phone whose screen is one grey with the pointer on
// it and whose texts the test chooses.
class FakePhone {
 public:
    FakePhone() { EXPECT_TRUE(server_.start()); }

    EnginePlace place() const {
        const auto url = LoopbackUrl::ofPort(server_.port());
        return {url, url};
    }
    std::vector<std::string> requests() {
        const MutexLock lock(mutex_);
        return requests_;
    }

    // Set before the test runs.
    bool hasFrame = true;
    std::vector<std::string> texts = {"9", "Shop", "Bank"};
    std::vector<std::string> textsAfterTyping = {"Settings", "General"};
    std::string failing;  // the first request of this kind fails
    std::string error = "no iPhone connected over Bluetooth and no screen on USB";
    std::function<void()> onRequest = [] {};

 private:
    Bytes picture() RUNS_ON(mutex_) {
        constexpr int kWidth = 414;
        constexpr int kHeight = 900;
        constexpr int kDot = 30;
        const auto isDot = [](int at, int start) { return at >= start && at < start + kDot; };
        const auto image = pictures::drawn(kWidth, kHeight, [&, at = pointer_](int x, int y) {
            const bool isPointer =
                at && isDot(x, int(at->x * kWidth)) && isDot(y, int(at->y * kHeight));
            return isPointer ? pictures::kBlack : pictures::Colour{200, 200, 200};
        });
        return encodeSnapshot(image, {}).value();
    }
    HTTPResponse reply(const HTTPRequest& request) {
        onRequest();
        const MutexLock lock(mutex_);
        if (request.method == "POST") return act(request);
        if (!hasFrame) return HTTPResponse::error("no frame yet from Phone: unlock it", 503);
        const bool isAirplay = request.path == "/frame.png";
        requests_.push_back(isAirplay ? "airplay" : "look");
        const bool reads = request.path == "/look" || request.query.contains("ocr");
        if (!reads) {
            HTTPResponse response;
            response.contentType = "image/png";
            response.body = picture();
            return response;
        }
        Json list = typed_ ? textsAfterTyping : texts;
        return HTTPResponse::json(
            {{isAirplay ? "data" : "image", base64(picture())}, {"ocr", std::move(list)}});
    }
    HTTPResponse act(const HTTPRequest& request) RUNS_ON(mutex_) {
        std::string what = request.path;
        if (request.path == "/key") what += " " + request.body.value("key", "");
        requests_.push_back(what);
        if (what == failing) {
            failing.clear();
            return HTTPResponse::error(error);
        }
        if (request.path == "/move") {
            pointer_ = ScreenPoint{request.body.value("x", 0.0), request.body.value("y", 0.0)};
        }
        typed_ = typed_ || request.path == "/type";
        return HTTPResponse::json({{"ok", true}});
    }

    Mutex mutex_;
    std::vector<std::string> requests_ OWNED_BY(mutex_);
    std::optional<ScreenPoint> pointer_ OWNED_BY(mutex_);
    bool typed_ OWNED_BY(mutex_) = false;
    HTTPServer server_{0, [this](const HTTPRequest& request) { return reply(request); }};
};

PhoneTest::Progress run(FakePhone& fake, const PhoneTest::Situation& situation = {}) {
    ManualClock clock(ManualClock::Sleep::passes);
    const TryIt phone(fake.place(), clock);
    PhoneTest::Progress last;
    const auto ended = PhoneTest(phone, [&](const auto& now) { last = now; }).run(situation);
    EXPECT_EQ(last, ended);
    EXPECT_FALSE(ended.running);
    return ended;
}

TEST(PhoneTest, GoesThroughAllStepsInOrder) {
    FakePhone fake;
    const auto ended = run(fake);
    EXPECT_TRUE(ended.passed && ended.assistiveTouchOn);
    EXPECT_EQ(ended.screenState, PhoneScreen::awake);
    ASSERT_EQ(ended.lines.size(), 5U);
    EXPECT_EQ(ended.lines[0].detail, "USB cable. It can read: Shop, Bank");
    EXPECT_EQ(ended.lines[2].detail, "AssistiveTouch is on");
    EXPECT_THAT(fake.requests(), testing::ElementsAre("look", "/home", "/key h", "/move", "look",
                                                      "/move", "look", "/key space", "/type",
                                                      "/key enter", "look", "/home", "/key h"));
}

TEST(PhoneTest, WhatFallsShortIsMarkedAndStopsWhatNeedsIt) {
    constexpr auto kOk = Mark::passed;
    constexpr auto kBad = Mark::failed;
    const char* unreachable =
        "The iPhone isn't connected over Bluetooth. Unlock it and check that Settings › Bluetooth "
        "on the iPhone shows Tandrel as Connected.";
    const char* noKey = "The iPhone didn't get the key press, so the test stopped here.";
    const char* some = "Some of it didn't work yet. Fix the part marked above and test again.";
    // The detail is that of the first line that did not pass.
    using Prepare = std::function<void(FakePhone&)>;
    const std::tuple<Prepare, std::vector<Mark>, const char*, const char*> rows[] = {
        {[](auto& fake) { fake.hasFrame = false; },
         {kBad},
         "",
         "Tandrel can't see the iPhone yet, so nothing was done on it."},
        {[](auto& fake) { fake.texts = {"9:41", "Tuesday, January 9"}; },
         {kBad},
         "The iPhone is locked. Unlock it, then test again. Your AI can't unlock it for you.",
         "Nothing was done on the iPhone."},
        {[](auto& fake) { fake.failing = "/home"; }, {kOk, kBad}, unreachable, noKey},
        {[](auto& fake) { fake.failing = "/key h"; }, {kOk, kBad}, unreachable, noKey},
        {[](auto& fake) { fake.failing = "/move"; },
         {kOk, kOk, kBad},
         unreachable,
         "The pointer couldn't be moved, so the test stopped here."},
        // A search that lists it.
        {[](auto& fake) { fake.textsAfterTyping = {"Top Hit", "Settings", "General"}; },
         {kOk, kOk, kOk, kBad, kOk},
         "Settings didn't open. If the iPhone shows a search screen with the wrong letters, "
         "set "
         "Settings › General › Keyboard › Hardware Keyboard to U.S. and test again.",
         some},
        {[](auto& fake) {
             fake.failing = "/type";
             fake.error = "Tandrel is paused: the owner turned off control";
         },
         {kOk, kOk, kOk, kBad, kOk},
         "Typing didn't reach the iPhone. Control is paused. Turn it back on from the Tandrel "
         "menu "
         "in the menu bar.",
         some},
    };
    for (const auto& [prepare, wanted, detail, message] : rows) {
        SCOPED_TRACE(detail);
        FakePhone fake;
        prepare(fake);
        const auto ended = run(fake);
        std::vector<Mark> marks;
        for (const auto& line : ended.lines) marks.push_back(line.mark);
        EXPECT_EQ(marks, wanted);
        const auto fault = std::ranges::find(ended.lines, kBad, &PhoneTest::Line::mark);
        ASSERT_NE(fault, ended.lines.end());
        EXPECT_EQ(fault->detail.value_or(""), detail);
        EXPECT_EQ(ended.message, message);
        EXPECT_FALSE(ended.passed);
    }
}

TEST(PhoneTest, WhilePausedNoRequestIsMade) {
    FakePhone fake;
    const auto ended = run(fake, {.paused = true});
    EXPECT_EQ(ended.message, "Nothing was done on the iPhone.");
    EXPECT_EQ(ended.lines.at(0).title, "Control is paused");
    EXPECT_THAT(fake.requests(), testing::IsEmpty());
}

TEST(PhoneTest, OverAirPlayEveryPictureComesFromThere) {
    FakePhone fake;
    const auto ended = run(fake, {.from = TryIt::From::airplay});
    EXPECT_TRUE(ended.passed);
    EXPECT_EQ(ended.lines.at(0).detail, "AirPlay. It can read: Shop, Bank");
    EXPECT_THAT(fake.requests(), testing::Not(testing::Contains("look")));
}

TEST(PhoneTest, ATestThatIsStoppedEndsWithoutASentence) {
    FakePhone fake;
    std::stop_source stopping;
    int requests = 0;
    fake.onRequest = [&] {
        if (++requests == 2) stopping.request_stop();
    };
    ManualClock clock(ManualClock::Sleep::passes);
    const TryIt phone(fake.place(), clock, {}, stopping.get_token());
    const auto ended = PhoneTest(phone, [](const auto&) {}).run({});
    EXPECT_EQ(ended.message, std::nullopt);
    EXPECT_EQ(ended.lines.size(), 2U);
    EXPECT_LE(fake.requests().size(), 2U);
}

}  // namespace
}  // namespace tandrel
