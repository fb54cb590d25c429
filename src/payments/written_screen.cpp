#include "payments/written_screen.h"

#include <algorithm>
#include <optional>

#include <fmt/format.h>

#include "base/unicode.h"

namespace tandrel::PaymentGuard {
namespace {

constexpr double kLineSpacing = 1.25;
constexpr double kBodySize = 17;
constexpr double kSliderFrom = 0.12;  // of the width
constexpr double kSliderTo = 0.9;
constexpr double kSwipeWithoutSlider = 0.8;  // of the height

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
};
// clang-format on

const RowLook& lookOf(RowKind kind) { return *std::ranges::find(kLooks, kind, &RowLook::kind); }

WrittenRow parseRow(const std::string& written) {
    WrittenRow row{.text = written, .detail = {}, .written = written};
    for (const Marks& marks : kMarks) {
        const auto length = marks.open.size() + marks.close.size();
        if (written.size() <= length || !written.starts_with(marks.open)) continue;
        if (!written.ends_with(marks.close)) continue;
        row.kind = marks.kind;
        row.text = trimmed(written.substr(marks.open.size(), written.size() - length));
        return row;
    }
    const auto bar = written.find(" | ");
    if (bar == written.npos) return row;
    row.kind = RowKind::row;
    row.text = trimmed(written.substr(0, bar));
    row.detail = trimmed(written.substr(bar + 3));
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

class Layout {
 public:
    Layout() { add("9:41", 17, 34, 32); }

    void add(const WrittenRow& row) {
        const RowLook& look = lookOf(row.kind);
        const double room = kWrittenWidth - 2 * std::max(look.left, 20.0);
        const bool wraps = look.height == 0;
        const auto texts =
            wraps ? broken(row.text, look.size, room) : std::vector<std::string>{row.text};
        const double pitch = wraps ? look.size * kLineSpacing : look.height;
        main_ = {kWrittenWidth / 2, y_ + pitch / 2};
        double middle = y_ + pitch / 2;
        for (std::size_t i = 0; i < texts.size() && row.kind != RowKind::symbol; ++i) {
            const double width = widthOf(texts[i], look.size);
            const double left = look.left > 0 ? look.left : (kWrittenWidth - width) / 2;
            add(texts[i], look.size, left, middle);
            if (i == 0) main_.x = left + width / 2;
            middle += pitch;
        }
        if (!row.detail.empty()) {
            const double width = widthOf(row.detail, look.size);
            const double left = kWrittenWidth - look.left - width;
            add(row.detail, look.size, left, y_ + pitch / 2);
            detail_ = {left + width / 2, y_ + pitch / 2};
        }
        y_ += pitch * static_cast<double>(texts.size()) + look.gap;
    }

    Place place(bool onDetail) const { return onDetail ? detail_ : main_; }
    std::vector<Line> take() { return std::move(lines_); }

 private:
    void add(const std::string& text, double size, double left, double middle) {
        const double scale = kWrittenScale;
        lines_.push_back({text, left * scale, (middle - size / 2) * scale,
                          widthOf(text, size) * scale, size * scale});
    }

    double y_ = 74;  // below the status bar
    Place main_{};   // of the row added last
    Place detail_{};
    std::vector<Line> lines_;
};

std::optional<WrittenAction> tapOn(std::string_view target, const WrittenScreen& screen) {
    for (std::size_t i = 0; i < screen.size(); ++i) {
        const WrittenRow& row = screen[i];
        if (row.written == target || row.text == target)
            return WrittenAction{.kind = Kind::tap, .row = i, .text = {}};
        if (!row.detail.empty() && row.detail == target)
            return WrittenAction{.kind = Kind::tap, .row = i, .onDetail = true, .text = {}};
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

JudgedScreen layOut(const WrittenScreen& screen, const WrittenAction& action) {
    Layout layout;
    Place place{};
    for (std::size_t i = 0; i < screen.size(); ++i) {
        layout.add(screen[i]);
        const bool slides = action.kind == Kind::swipe && screen[i].kind == RowKind::slider;
        if (i == action.row || slides) place = layout.place(action.onDetail);
    }
    return {.frame = {kWrittenWidth * kWrittenScale, kWrittenHeight * kWrittenScale},
            .lines = layout.take(),
            .action = actionAt(screen, action, place.x, place.y)};
}

}  // namespace tandrel::PaymentGuard
