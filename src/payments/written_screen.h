#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "payments/payment_guard.h"

// A phone's screen written down in a few lines of text, as people write cases for the guard.
namespace tandrel::PaymentGuard {

// How a row is written decides what it is:
//   "= Review"       the screen's title        "[Pay now]"   a filled button
//   "Total | €25"    a row with a detail       "(Cancel)"    a button that is text alone
//   ":Place your"    centred text              "~Slide~"     a slider
//   "_Code_"         a field                   "{tick}"      a button that is a symbol alone
//   "Home | Search | Cart"  cells side by side, three or more: a bar of tabs, a grid, a keypad
//   "---"            what follows stands at the bottom of the screen
// Anything else is a text at the left edge.
enum class RowKind {
    text,
    title,
    centred,
    row,
    cells,
    button,
    plainButton,
    slider,
    field,
    symbol,
    bottom,
};

struct WrittenRow {
    RowKind kind = RowKind::text;
    std::string text;  // without the marks; of a symbol its name
    std::string detail;
    std::vector<std::string> cells;  // of a row of cells; `text` is the first
    std::string written;
};
using WrittenScreen = std::vector<WrittenRow>;

WrittenScreen parseWrittenScreen(const std::vector<std::string>& rows);

// "tap ROW" (a row as written, its text, its detail or one of its cells), "swipe", "enter" or
// "type TEXT".
struct WrittenAction {
    Kind kind = Kind::tap;
    std::size_t row = 0;   // of a tap
    std::size_t cell = 0;  // of the tapped row; 1 is its detail
    std::string text;      // of typing
};
Result<WrittenAction> parseWrittenAction(std::string_view text, const WrittenScreen& screen);

// A screen and an action as the guard gets them.
struct JudgedScreen {
    FrameSize frame;
    std::vector<Line> lines;
    Action action;
};

inline constexpr double kWrittenWidth = 402;  // points, of a screen laid out or drawn
inline constexpr double kWrittenHeight = 874;
inline constexpr double kWrittenScale = 3;  // pixels a point

// Where each text stands when the rows are stacked as a phone does, read without a mistake. Rows
// that do not fit on the screen are an error.
Result<JudgedScreen> layOut(const WrittenScreen& screen, const WrittenAction& action);

// The action, its tap at a place of the screen in points.
Action actionAt(const WrittenScreen& screen, const WrittenAction& action, double x, double y);

}  // namespace tandrel::PaymentGuard
