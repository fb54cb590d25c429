#include "payments/written_screen.h"

#include <algorithm>
#include <optional>

#include <fmt/format.h>

#include "base/unicode.h"

namespace tandrel::PaymentGuard {
namespace {

constexpr double kLineSpacing = 1.25;
constexpr double kTop = 74;           // below the status bar
constexpr double kBottom = 24;        // the bar that leads home
constexpr double kSliderFrom = 0.12;  // of the width
constexpr double kSliderTo = 0.9;
constexpr double kSwipeWithoutSlider = 0.8;  // of the height

constexpr std::string_view kBottomMark = "---";
constexpr std::string_view kBetweenCells = " | ";

struct Marks {
    std::string_view open;
    std::string_view close;
    RowKind kind;
};
// clang-format off
constexpr Marks kMarks[] = {
    {"= ", "",  RowKind::title},
    {":",  "",  RowKind::centred},
    {"[",  "]", RowKind::button},
    {"(",  ")", RowKind::plainButton},
    {"~",  "~", RowKind::slider},
    {"_",  "_", RowKind::field},
    {"{",  "}", RowKind::symbol},
};

// Points, as the virtual phone stacks its items.
struct RowLook {
    RowKind kind;
    double size;    // of the text
    double height;  // of the row; 0: as high as its lines
    double gap;     // below it
    double left;    // of the text; 0: centred
};
constexpr RowLook kLooks[] = {
    {RowKind::text,        17,  0, 14, 20},
    {RowKind::title,       34, 44, 10, 16},
    {RowKind::centred,     20,  0,  8,  0},
    {RowKind::row,         17, 50,  0, 32},
    {RowKind::button,      17, 50, 12,  0},
    {RowKind::plainButton, 17, 50, 12,  0},
    {RowKind::slider,      19, 64, 14,  0},
    {RowKind::field,       17, 50, 12, 32},
    {RowKind::symbol,       0, 60, 14,  0},
    {RowKind::cells,       13, 44,  0,  0},
    {RowKind::bottom,       0,  0,  0,  0},
};
// clang-format on

const RowLook& lookOf(RowKind kind) { return *std::ranges::find(kLooks, kind, &RowLook::kind); }

std::vector<std::string> cellsOf(const std::string& written) {
    std::vector<std::string> cells;
    for (std::size_t at = 0; at <= written.size();) {
        const auto end = std::min(written.find(kBetweenCells, at), written.size());
        cells.push_back(trimmed(written.substr(at, end - at)));
        at = end + kBetweenCells.size();
    }
    return cells;
}

WrittenRow parseRow(const std::string& written) {
    WrittenRow row{.text = written, .detail = {}, .cells = {}, .written = written};
    if (written == kBottomMark) {
        row.kind = RowKind::bottom;
        row.text.clear();
        return row;
    }
    for (const Marks& marks : kMarks) {
        const auto length = marks.open.size() + marks.close.size();
        if (written.size() <= length || !written.starts_with(marks.open)) continue;
        if (!written.ends_with(marks.close)) continue;
        row.kind = marks.kind;
        row.text = trimmed(written.substr(marks.open.size(), written.size() - length));
        return row;
    }
    auto cells = cellsOf(written);
    if (cells.size() < 2) return row;
    row.kind = RowKind::row;
    row.text = cells[0];
    if (cells.size() == 2) {
        row.detail = cells[1];
        return row;
    }
    row.kind = RowKind::cells;
    row.cells = std::move(cells);
    return row;
}

// Wide characters are those of scripts whose letters fill a square.
double widthOf(std::string_view text, double size) {
    double width = 0;
    for (const auto& character : graphemes(text)) width += character.size() >= 3 ? 1 : 0.52;
    return width * size;
}

std::vector<std::string> broken(const std::string& text, double size, double room) {
    std::vector<std::string> lines{""};
    for (std::size_t at = 0; at <= text.size();) {
        const auto end = std::min(text.find(' ', at), text.size());
        const std::string word = text.substr(at, end - at);
        at = end + 1;
        const std::string longer = lines.back().empty() ? word : lines.back() + " " + word;
        if (lines.back().empty() || widthOf(longer, size) <= room) {
            lines.back() = longer;
        } else {
            lines.push_back(word);
        }
    }
    return lines;
}

struct Place {
    double x;
    double y;
};

// The lines of a row, and from one to the next.
struct Stack {
    std::vector<std::string> texts;
    double pitch;
    double height;  // with the gap below
};

Stack stackOf(const WrittenRow& row) {
    const RowLook& look = lookOf(row.kind);
    Stack stack{.texts = {row.text}, .pitch = look.height, .height = 0};
    if (look.height == 0 && row.kind != RowKind::bottom) {
        const double room = kWrittenWidth - 2 * std::max(look.left, 20.0);
        stack.texts = broken(row.text, look.size, room);
        stack.pitch = look.size * kLineSpacing;
    }
    stack.height = stack.pitch * static_cast<double>(stack.texts.size()) + look.gap;
    return stack;
}

class Layout {
 public:
    Layout() { add("9:41", 17, 34, 32); }

    // Goes on so far down that rows of this height end at the bottom of the screen.
    void skipTo(double heightOfTheRest) {
        y_ = std::max(y_, kWrittenHeight - kBottom - heightOfTheRest);
    }

    // The places of the row's text, and of its detail or its other cells.
    std::vector<Place> add(const WrittenRow& row) {
        const RowLook& look = lookOf(row.kind);
        const Stack stack = stackOf(row);
        double middle = y_ + stack.pitch / 2;
        y_ += stack.height;
        if (row.kind == RowKind::cells) return addCells(row.cells, look.size, middle);
        std::vector<Place> places{{kWrittenWidth / 2, middle}};
        for (std::size_t i = 0; i < stack.texts.size() && look.size > 0; ++i) {
            const double width = widthOf(stack.texts[i], look.size);
            const double left = look.left > 0 ? look.left : (kWrittenWidth - width) / 2;
            add(stack.texts[i], look.size, left, middle);
            if (i == 0) places[0].x = left + width / 2;
            middle += stack.pitch;
        }
        if (row.detail.empty()) return places;
        const double width = widthOf(row.detail, look.size);
        const double left = kWrittenWidth - look.left - width;
        add(row.detail, look.size, left, places[0].y);
        places.push_back({left + width / 2, places[0].y});
        return places;
    }

    bool fits() const { return y_ <= kWrittenHeight; }
    std::vector<Line> take() { return std::move(lines_); }

 private:
    std::vector<Place> addCells(const std::vector<std::string>& cells, double size, double middle) {
        std::vector<Place> places;
        const double room = kWrittenWidth / static_cast<double>(cells.size());
        for (const auto& cell : cells) {
            const double centre = room * (static_cast<double>(places.size()) + 0.5);
            if (!cell.empty()) add(cell, size, centre - widthOf(cell, size) / 2, middle);
            places.push_back({centre, middle});
        }
        return places;
    }

    void add(const std::string& text, double size, double left, double middle) {
        const double scale = kWrittenScale;
        lines_.push_back({text, left * scale, (middle - size / 2) * scale,
                          widthOf(text, size) * scale, size * scale});
    }

    double y_ = kTop;
    std::vector<Line> lines_;
};

// The height of the rows from this one on.
double heightFrom(const WrittenScreen& screen, std::size_t row) {
    double height = 0;
    for (; row < screen.size(); ++row) height += stackOf(screen[row]).height;
    return height;
}

std::optional<WrittenAction> tapOn(std::string_view target, const WrittenScreen& screen) {
    for (std::size_t i = 0; i < screen.size(); ++i) {
        const WrittenRow& row = screen[i];
        if (row.written == target || row.text == target)
            return WrittenAction{.kind = Kind::tap, .row = i, .text = {}};
        if (!row.detail.empty() && row.detail == target)
            return WrittenAction{.kind = Kind::tap, .row = i, .cell = 1, .text = {}};
        const auto cell = std::ranges::find(row.cells, target);
        if (cell != row.cells.end() && !cell->empty())
            return WrittenAction{.kind = Kind::tap,
                                 .row = i,
                                 .cell = static_cast<std::size_t>(cell - row.cells.begin()),
                                 .text = {}};
    }
    return std::nullopt;
}

}  // namespace

WrittenScreen parseWrittenScreen(const std::vector<std::string>& rows) {
    WrittenScreen screen;
    screen.reserve(rows.size());
    for (const auto& row : rows) screen.push_back(parseRow(row));
    return screen;
}

Result<WrittenAction> parseWrittenAction(std::string_view text, const WrittenScreen& screen) {
    const auto space = std::min(text.find(' '), text.size());
    const auto word = kind(text.substr(0, space));
    if (!word) return fail(fmt::format("\"{}\" is no action", text));
    const std::string_view rest = text.substr(std::min(space + 1, text.size()));
    if (*word != Kind::tap)
        return WrittenAction{.kind = *word, .row = screen.size(), .text = std::string(rest)};
    auto tap = tapOn(rest, screen);
    if (!tap) return fail(fmt::format("no row is \"{}\"", rest));
    return std::move(*tap);
}

Action actionAt(const WrittenScreen& screen, const WrittenAction& action, double x, double y) {
    Action result{.kind = action.kind};
    switch (action.kind) {
        case Kind::tap:
            result.x = x / kWrittenWidth;
            result.y = y / kWrittenHeight;
            break;
        case Kind::swipe: {
            const bool slider =
                std::ranges::find(screen, RowKind::slider, &WrittenRow::kind) != screen.end();
            result.x = kSliderFrom;
            result.x2 = kSliderTo;
            result.y = result.y2 = slider ? y / kWrittenHeight : kSwipeWithoutSlider;
            break;
        }
        case Kind::type:
            result.text = action.text;
            break;
        case Kind::enter:
            break;
    }
    return result;
}

Result<JudgedScreen> layOut(const WrittenScreen& screen, const WrittenAction& action) {
    Layout layout;
    Place place{};
    for (std::size_t i = 0; i < screen.size(); ++i) {
        if (screen[i].kind == RowKind::bottom) layout.skipTo(heightFrom(screen, i));
        const auto places = layout.add(screen[i]);
        const bool slides = action.kind == Kind::swipe && screen[i].kind == RowKind::slider;
        if (i == action.row || slides) place = places.at(std::min(action.cell, places.size() - 1));
    }
    if (!layout.fits()) return fail("its rows are higher than the screen");
    return JudgedScreen{.frame = {kWrittenWidth * kWrittenScale, kWrittenHeight * kWrittenScale},
                        .lines = layout.take(),
                        .action = actionAt(screen, action, place.x, place.y)};
}

}  // namespace tandrel::PaymentGuard
