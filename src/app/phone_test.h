#pragma once

#include <QtGlobal>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/try_it.h"
#include "screen/phone_screen.h"

namespace tandrel {

// A short, harmless test on the phone through the engine's own API, exactly as an assistant would
// use it: looks at the screen, presses Home, moves the pointer and looks for it, opens Settings by
// typing, and goes back Home. One object is one run; it blocks the thread that calls `run`.
class PhoneTest {
 public:
    // `fellShort`: it did not pass, but the test went on.
    enum class Mark { running, passed, failed, fellShort };
    struct Line {
        int id = 0;  // counts from 1
        std::string title;
        Mark mark = Mark::running;
        std::optional<std::string> detail = std::nullopt;

        bool operator==(const Line&) const = default;
    };
    struct Progress {
        std::vector<Line> lines = {};
        bool running = false;
        std::optional<std::string> message = std::nullopt;      // the closing sentence
        bool passed = false;                                    // holds once there is a message
        std::optional<PhoneScreen> screenState = std::nullopt;  // of the first picture
        bool assistiveTouchOn = false;                          // the pointer was seen

        bool operator==(const Progress&) const = default;
    };
    // Called after every change, on the thread of `run`.
    using Changed = std::function<void(const Progress& now)>;

    PhoneTest(const TryIt& phone, Changed changed) : phone_(phone), changed_(std::move(changed)) {}

    struct Situation {
        bool paused = false;
        TryIt::From from = TryIt::From::cable;
    };
    // Logs how it ended. A test that is stopped ends without a message.
    Progress run(const Situation& situation);

    // Moves the pointer from one place to another and looks for it. Blocks for some seconds.
    struct PointerLook {
        std::optional<TryIt::Problem> problem = std::nullopt;
        bool shown = false;
    };
    static PointerLook pointerShows(const TryIt& phone, TryIt::From from);

    // What the owner reads before.
    static constexpr const char* kExplanation = QT_TRANSLATE_NOOP(
        "PhoneTest",
        "A quick test on the iPhone: Tandrel presses Home, moves the pointer, opens Settings by "
        "typing, and goes back Home. Nothing is changed.");
    static constexpr const char* kAdvice = QT_TRANSLATE_NOOP(
        "PhoneTest", "Keep the iPhone unlocked. The test takes about 15 seconds.");
    // What to do when the pointer was not seen.
    static constexpr const char* kPointerUnseen = QT_TRANSLATE_NOOP(
        "PhoneTest",
        "The pointer didn't show up, so taps won't work. On the iPhone, turn on Settings › "
        "Accessibility › Touch › AssistiveTouch.");

 private:
    enum class Next { goOn, stop };

    void runSteps(const Situation& situation);
    Next seeScreen();
    Next pressHome();
    Next movePointer();
    Next openSettings();
    Next goBackHome();
    void sumUp();

    int begin(std::string title);
    void end(int index, Mark mark, std::optional<std::string> detail = std::nullopt);
    void finish(bool passed, std::string message);
    std::optional<TryIt::Problem> typeSettings() const;

    const TryIt& phone_;
    const Changed changed_;
    TryIt::From from_ = TryIt::From::cable;
    Progress progress_;
};

}  // namespace tandrel
