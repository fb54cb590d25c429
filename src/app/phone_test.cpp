#include "app/phone_test.h"

#include <algorithm>
#include <array>
#include <utility>

#include "app/owner_text.h"
#include "app/settings_page.h"
#include "base/log.h"
#include "base/unicode.h"
#include "devices/pointer_check.h"
#include "screen/snapshot.h"

namespace tandrel {
namespace {

constexpr int kMaxEdge = 900;  // pixels
constexpr std::size_t kTextsShown = 4;

constexpr Duration kAfterHome = std::chrono::milliseconds(1200);
constexpr Duration kAfterMove = std::chrono::milliseconds(800);
constexpr Duration kAfterSearch = std::chrono::milliseconds(900);
constexpr Duration kAfterTyping = std::chrono::milliseconds(1000);
constexpr Duration kAfterEnter = std::chrono::milliseconds(2000);

constexpr const char* kNothingDone =
    QT_TRANSLATE_NOOP("PhoneTest", "Nothing was done on the iPhone.");

// "USB cable. It can read: Shop, Bank"
std::string described(TryIt::From from, const std::vector<std::string>& texts) {
    std::string source =
        from == TryIt::From::airplay ? "AirPlay" : ownerText("PhoneTest", "USB cable");
    std::string readable;
    std::size_t shown = 0;
    for (const std::string& text : texts) {
        if (graphemeCount(text) < 2) continue;
        readable += (shown == 0 ? "" : ", ") + text;
        if (++shown == kTextsShown) break;
    }
    if (shown == 0) return source;
    return filledIn(ownerText("PhoneTest", "%1. It can read: %2"), {source, readable});
}

std::optional<PointerCheck::Thumbnail> gray(const std::optional<TryIt::Frame>& frame) {
    if (!frame) return std::nullopt;
    return thumbnailOf(frame->image, PointerCheck::width, PointerCheck::height);
}

Json pointBody(ScreenPoint point) { return {{"x", point.x}, {"y", point.y}, {"fraction", true}}; }

}  // namespace

int PhoneTest::begin(std::string title) {
    const int index = static_cast<int>(progress_.lines.size());
    progress_.lines.push_back({.id = index + 1, .title = std::move(title)});
    changed_(progress_);
    return index;
}

void PhoneTest::end(int index, Mark mark, std::optional<std::string> detail) {
    Line& line = progress_.lines[static_cast<std::size_t>(index)];
    line.mark = mark;
    line.detail = std::move(detail);
    changed_(progress_);
}

void PhoneTest::finish(bool passed, std::string message) {
    progress_.passed = passed;
    progress_.message = std::move(message);
    log(passed ? "test: passed" : "test: failed");
}

PhoneTest::Progress PhoneTest::run(const Situation& situation) {
    progress_ = {.running = true};
    from_ = situation.from;
    runSteps(situation);
    progress_.running = false;
    if (phone_.stopped()) progress_.message.reset();
    changed_(progress_);
    return progress_;
}

void PhoneTest::runSteps(const Situation& situation) {
    if (situation.paused) {
        end(begin(ownerText("PhoneTest", "Control is paused")), Mark::failed,
            ownerText("PhoneTest",
                      "Control is paused. Turn it back on in the Tandrel menu, then test again."));
        return finish(false, ownerText("PhoneTest", kNothingDone));
    }
    using Deed = Next (PhoneTest::*)();
    constexpr std::array<Deed, 5> steps = {&PhoneTest::seeScreen, &PhoneTest::pressHome,
                                           &PhoneTest::movePointer, &PhoneTest::openSettings,
                                           &PhoneTest::goBackHome};
    for (const Deed step : steps) {
        if ((this->*step)() == Next::stop || phone_.stopped()) return;
    }
    sumUp();
}

PhoneTest::Next PhoneTest::seeScreen() {
    const int line = begin(ownerText("PhoneTest", "See the iPhone's screen"));
    const auto frame = phone_.frame(from_, kMaxEdge, TryIt::Text::read);
    if (!frame) {
        end(line, Mark::failed);
        finish(false, ownerText("PhoneTest",
                                "Tandrel can't see the iPhone yet, so nothing was done on it."));
        return Next::stop;
    }
    const PhoneScreen state = classify(frame->texts, meanLuma(frame->image));
    progress_.screenState = state;
    if (state == PhoneScreen::off || state == PhoneScreen::locked) {
        end(line, Mark::failed,
            state == PhoneScreen::off
                ? ownerText("PhoneTest",
                            "The screen is off. Press the iPhone's side button and unlock it, "
                            "then test again.")
                : ownerText("PhoneTest",
                            "The iPhone is locked. Unlock it, then test again. Your AI can't "
                            "unlock it for you."));
        finish(false, ownerText("PhoneTest", kNothingDone));
        return Next::stop;
    }
    end(line, Mark::passed, described(from_, frame->texts));
    return Next::goOn;
}

PhoneTest::Next PhoneTest::pressHome() {
    const int line = begin(ownerText("PhoneTest", "Press Home"));
    const auto problem = phone_.home();
    phone_.wait(kAfterHome);
    if (problem) {
        end(line, Mark::failed, problem);
        finish(false, ownerText("PhoneTest",
                                "The iPhone didn't get the key press, so the test stopped here."));
        return Next::stop;
    }
    end(line, Mark::passed);
    return Next::goOn;
}

PhoneTest::PointerLook PhoneTest::pointerShows(const TryIt& phone, TryIt::From from) {
    std::array<std::optional<PointerCheck::Thumbnail>, 2> seen;
    for (std::size_t i = 0; i < seen.size(); ++i) {
        const ScreenPoint point = i == 0 ? PointerCheck::a : PointerCheck::b;
        if (auto problem = phone.act("/move", pointBody(point))) return {.problem = problem};
        phone.wait(kAfterMove);
        seen[i] = gray(phone.frame(from, kMaxEdge, TryIt::Text::unread));
    }
    return {.shown = seen[0] && seen[1] && PointerCheck::pointerMoved(*seen[0], *seen[1])};
}

PhoneTest::Next PhoneTest::movePointer() {
    const int line = begin(ownerText("PhoneTest", "Move the pointer"));
    const PointerLook look = pointerShows(phone_, from_);
    if (look.problem) {
        end(line, Mark::failed, look.problem);
        finish(false,
               ownerText("PhoneTest", "The pointer couldn't be moved, so the test stopped here."));
        return Next::stop;
    }
    if (look.shown) {
        progress_.assistiveTouchOn = true;
        end(line, Mark::passed, ownerText("PhoneTest", "AssistiveTouch is on"));
    } else {
        end(line, Mark::fellShort, ownerText("PhoneTest", kPointerUnseen));
    }
    return Next::goOn;
}

std::optional<TryIt::Problem> PhoneTest::typeSettings() const {
    if (auto problem = phone_.act("/key", {{"key", "space"}, {"modifiers", {"cmd"}}})) {
        return problem;
    }
    phone_.wait(kAfterSearch);
    if (auto problem = phone_.act("/type", {{"text", "Settings"}})) return problem;
    phone_.wait(kAfterTyping);
    if (auto problem = phone_.act("/key", {{"key", "enter"}})) return problem;
    phone_.wait(kAfterEnter);
    return std::nullopt;
}

PhoneTest::Next PhoneTest::openSettings() {
    const int line = begin(ownerText("PhoneTest", "Open Settings by typing"));
    if (const auto problem = typeSettings()) {
        end(line, Mark::failed,
            ownerText("PhoneTest", "Typing didn't reach the iPhone.") + " " + *problem);
        return Next::goOn;
    }
    const auto frame = phone_.frame(from_, kMaxEdge, TryIt::Text::read);
    if (frame && looksLikeSettings(frame->texts)) {
        end(line, Mark::passed);
    } else {
        end(line, Mark::failed,
            ownerText("PhoneTest",
                      "Settings didn't open. If the iPhone shows a search screen with the wrong "
                      "letters, set "
                      "Settings › General › Keyboard › Hardware Keyboard to U.S. and test again."));
    }
    return Next::goOn;
}

PhoneTest::Next PhoneTest::goBackHome() {
    const int line = begin(ownerText("PhoneTest", "Back to the Home screen"));
    const auto problem = phone_.home();
    end(line, problem ? Mark::failed : Mark::passed, problem);
    return Next::goOn;
}

void PhoneTest::sumUp() {
    const auto count = [&](Mark mark) {
        return std::ranges::count(progress_.lines, mark, &Line::mark);
    };
    if (count(Mark::failed) > 0) {
        finish(false,
               ownerText("PhoneTest",
                         "Some of it didn't work yet. Fix the part marked above and test again."));
    } else if (count(Mark::fellShort) > 0) {
        finish(false,
               ownerText("PhoneTest", "Typing works, but taps won't until AssistiveTouch is on."));
    } else {
        finish(
            true,
            ownerText(
                "PhoneTest",
                "Everything works. Ask your AI something like “Open Settings on my iPhone and tell "
                "me which iOS version it has.”"));
    }
}

}  // namespace tandrel
