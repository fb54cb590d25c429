#include "screen/phone_screen.h"

#include <gtest/gtest.h>

#include "image/pictures.h"

namespace tandrel {

void PrintTo(PhoneScreen screen, std::ostream* out) { *out << name(screen); }

namespace {

using Lines = std::vector<std::string>;

Lines lockScreenWith(int more) {
    Lines lines{"9:41", "Tuesday 9 January"};
    for (int i = 0; i < more; ++i) lines.push_back("line " + std::to_string(i));
    return lines;
}

TEST(PhoneScreen, IsToldFromTextsAndBrightness) {
    const std::tuple<const char*, Lines, std::optional<double>, PhoneScreen> rows[] = {
        {"black, no text", {}, 0.005, PhoneScreen::off},
        {"black, blank text", {" ", "\t\n"}, 0.0299, PhoneScreen::off},
        {"just not black", {}, 0.03, PhoneScreen::awake},
        {"black with text", {"Settings"}, 0.005, PhoneScreen::awake},
        {"bright, no text", {}, 0.5, PhoneScreen::awake},
        {"nothing known", {}, std::nullopt, PhoneScreen::unknown},
        {"text, brightness unknown", {"Settings"}, std::nullopt, PhoneScreen::awake},

        {"clock and date", {"9:41", "Tuesday 9 January"}, 0.4, PhoneScreen::locked},
        {"and a notification", lockScreenWith(1), 0.4, PhoneScreen::locked},
        {"ten lines", lockScreenWith(8), 0.4, PhoneScreen::locked},
        {"eleven lines", lockScreenWith(9), 0.4, PhoneScreen::awake},
        {"blank lines do not count",
         {"", "", "", "", "", "", "", "", "", "9:41", "Sunday, May 3"},
         0.4,
         PhoneScreen::locked},
        {"date before clock", {"Friday 1. March", " 21.05 "}, 0.4, PhoneScreen::locked},
        {"month first", {"9:41", "wednesday, january 10"}, 0.4, PhoneScreen::locked},
        {"clock alone", {"9:41", "Settings"}, 0.4, PhoneScreen::awake},
        {"date alone", {"Tuesday 9 January"}, 0.4, PhoneScreen::awake},
        {"clock within a line", {"Alarm 9:41", "Tuesday 9 January"}, 0.4, PhoneScreen::awake},
        {"clock without minutes", {"9:4", "Tuesday 9 January"}, 0.4, PhoneScreen::awake},
        {"short day", {"9:41", "Tue 9 January"}, 0.4, PhoneScreen::awake},
        {"date within a line", {"9:41", "On Tuesday 9 January"}, 0.4, PhoneScreen::awake},

        {"prompt among many lines",
         {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "Swipe up to unlock"},
         0.2,
         PhoneScreen::locked},
        {"prompt within a word", {"Reenter passcode"}, 0.2, PhoneScreen::awake},
        {"swipe to something else", {"Swipe up to close"}, 0.2, PhoneScreen::awake},
        {"on a black frame", {"Enter Passcode"}, 0.001, PhoneScreen::locked},

        {"home screen", {"Mail", "Maps", "Photos"}, 0.5, PhoneScreen::awake},
        {"not UTF-8", {"\xff\xfe"}, 0.5, PhoneScreen::awake},
    };
    for (const auto& [name, lines, luma, state] : rows)
        EXPECT_EQ(classify(lines, luma), state) << name;
}

TEST(PhoneScreen, APromptOfTheLockScreenLocks) {
    for (const char* prompt :
         {"ENTER passcode", "Swipe up to open", "Press home to unlock", "iPhone Unavailable",
          "iPhone is disabled", "Security Lockout", "Try again in 15 minutes"}) {
        EXPECT_EQ(classify({prompt}, 0.2), PhoneScreen::locked) << prompt;
    }
}

TEST(PhoneScreen, MeanLumaIsTheFramesBrightness) {
    EXPECT_EQ(meanLuma(pictures::plain(1206, 2622, pictures::kBlack)), 0.0);
    EXPECT_EQ(meanLuma(pictures::plain(100, 200, pictures::kWhite)), 1.0);
    const auto half = meanLuma(pictures::drawn(
        240, 520, [](int, int y) { return y < 260 ? pictures::kBlack : pictures::kWhite; }));
    EXPECT_DOUBLE_EQ(*half, 0.5);
    EXPECT_FALSE(meanLuma(PixelBuffer()));
}

}  // namespace
}  // namespace tandrel
