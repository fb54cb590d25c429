#include <string>
#include <vector>

#include "payments/wider_rules.h"

namespace tandrel::PaymentGuard {
namespace {

constexpr double kLeft = 100;
constexpr double kWidth = 400;
constexpr double kHeight = 40;
constexpr double kRow = 110;
constexpr double kExampleTop = 60;
constexpr double kExampleFoot = 1000;

struct ExampleLayout {
    std::vector<Line> lines;
    Action action;
};

bool takePrefix(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

void tapAt(ExampleLayout& layout, double x, double y) {
    layout.action = {.x = x / kExampleFrame.width, .y = y / kExampleFrame.height};
}

void addLine(ExampleLayout& layout, std::string_view text, double& top) {
    const bool tapped = takePrefix(text, "> ");
    const bool around = takePrefix(text, "+ ");
    const bool below = takePrefix(text, "_ ");
    const bool turned = takePrefix(text, "| ");
    const bool beside = takePrefix(text, "/ ");
    const bool spotBeside = text.ends_with(" >>");
    if (spotBeside) text.remove_suffix(3);
    Line line{std::string(text), kLeft, top, kWidth, kHeight};
    if (spotBeside) line.w = 150;
    if (turned) line = {std::string(text), 100, top, kHeight, 90};
    if (around && !layout.lines.empty()) {
        const Line& inner = layout.lines.back();
        line.y = inner.y - 10;
        line.h = inner.h + 20;
    } else if (beside && !layout.lines.empty()) {
        Line& left = layout.lines.back();
        left.w = 150;
        line.x = kLeft + kWidth - 150;
        line.w = 150;
        line.y = left.y;
    } else if (below && !layout.lines.empty()) {
        line.y = layout.lines.back().y + kHeight + 10;
    } else {
        top += kRow;
    }
    if (tapped) tapAt(layout, line.x + line.w / 2, line.y + line.h / 2);
    if (spotBeside) tapAt(layout, 0.9 * kExampleFrame.width, line.y + line.h / 2);
    layout.lines.push_back(std::move(line));
}

ExampleLayout laidOut(std::string_view text) {
    ExampleLayout layout;
    double top = kExampleTop;
    for (std::size_t at = 0; at <= text.size();) {
        const auto end = std::min(text.find('\n', at), text.size());
        std::string_view row = text.substr(at, end - at);
        at = end + 1;
        if (row == "enter") {
            layout.action = {.kind = Kind::enter};
        } else if (row == "swipe") {
            layout.action = {.kind = Kind::swipe, .x = 0.15, .y = 0.9, .x2 = 0.85, .y2 = 0.9};
        } else if (takePrefix(row, "type ")) {
            layout.action = {.kind = Kind::type, .text = std::string(row)};
        } else if (row == "foot") {
            top = kExampleFoot;
        } else if (row == ">") {
            tapAt(layout, kExampleFrame.width / 2, top + kHeight / 2);
            top += kRow;
        } else {
            addLine(layout, row, top);
        }
    }
    return layout;
}

}  // namespace

std::vector<Line> RuleExample::lines() const { return laidOut(text).lines; }
Action RuleExample::action() const { return laidOut(text).action; }

}  // namespace tandrel::PaymentGuard
