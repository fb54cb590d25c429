#include "payments/written_screen.h"

#include <gmock/gmock.h>

namespace tandrel::PaymentGuard {
namespace {

using testing::HasSubstr;

const std::vector<std::string> kTill = {"= Till",      "Coffee and a bun", "Total | €5.20",
                                        ":In a hurry", "_Code_",           "[Pay now]",
                                        "(Cancel)",    "~Slide to pay~",   "{tick}"};

TEST(WrittenScreen, TheMarksSayWhatARowIs) {
    const struct {
        const char* written;
        RowKind kind;
        const char* text;
        const char* detail = "";
    } rows[] = {
        {"Coffee", RowKind::text, "Coffee"},
        {"= Till", RowKind::title, "Till"},
        {":In a hurry", RowKind::centred, "In a hurry"},
        {"Total | €5.20", RowKind::row, "Total", "€5.20"},
        {"[Pay now]", RowKind::button, "Pay now"},
        {"(Cancel)", RowKind::plainButton, "Cancel"},
        {"~Slide to pay~", RowKind::slider, "Slide to pay"},
        {"_Code_", RowKind::field, "Code"},
        {"{tick}", RowKind::symbol, "tick"},
        {"[", RowKind::text, "["},
        {"[]", RowKind::text, "[]"},
        {"(half", RowKind::text, "(half"},
        {"", RowKind::text, ""},
    };
    for (const auto& row : rows) {
        const WrittenRow parsed = parseWrittenScreen({row.written}).at(0);
        EXPECT_EQ(parsed.kind, row.kind) << row.written;
        EXPECT_EQ(parsed.text, row.text) << row.written;
        EXPECT_EQ(parsed.detail, row.detail) << row.written;
    }
}

TEST(WrittenScreen, ActionsWithoutATarget) {
    const auto screen = parseWrittenScreen(kTill);
    const auto actionOf = [&](const char* text) {
        return layOut(screen, *parseWrittenAction(text, screen))->action;
    };
    EXPECT_EQ(actionOf("enter"), (Action{.kind = Kind::enter}));
    EXPECT_EQ(actionOf("type ref 12"), (Action{.kind = Kind::type, .text = "ref 12"}));
    const Action swipe = actionOf("swipe");
    EXPECT_LT(swipe.x, 0.2);
    EXPECT_GT(swipe.x2, 0.8);
    const auto slider = layOut(screen, *parseWrittenAction("tap ~Slide to pay~", screen))->action;
    EXPECT_EQ(swipe.y, slider.y);
    for (const char* wrong : {"", "tap", "tap Nothing", "shake", "tap pay now"}) {
        EXPECT_FALSE(parseWrittenAction(wrong, screen)) << wrong;
    }
}

TEST(WrittenScreen, LongTextsAreBrokenAndStayOnTheScreen) {
    const auto screen = parseWrittenScreen(
        {"A sentence that is a good deal longer than a phone is wide, and more"});
    const auto laid = *layOut(screen, *parseWrittenAction("enter", screen));
    ASSERT_EQ(laid.lines.size(), 3u);  // the clock above them
    EXPECT_EQ(laid.lines[1].text + " " + laid.lines[2].text, screen[0].text);
    EXPECT_GE(laid.lines[2].y, laid.lines[1].y + laid.lines[1].h);
    for (const auto& line : laid.lines) EXPECT_LE(line.x + line.w, laid.frame.width) << line.text;
}

TEST(WrittenScreen, CellsStandSideBySideAndABarAtTheBottom) {
    const auto screen = parseWrittenScreen({"= Shop", "---", "[Add]", "Home | Search | Cart"});
    EXPECT_EQ(screen[3].cells, (std::vector<std::string>{"Home", "Search", "Cart"}));
    for (const char* target : {"Home", "Search", "Cart", "Add"}) {
        const auto laid =
            *layOut(screen, *parseWrittenAction("tap " + std::string(target), screen));
        EXPECT_EQ(label(laid.action.x, laid.action.y, laid.lines, laid.frame), target);
        EXPECT_GT(laid.action.y, 0.8) << target;
        EXPECT_LT(laid.action.y, 1) << target;
    }
}

TEST(WrittenScreen, RowsThatDoNotFitAreAnError) {
    for (const auto& [count, fits] : {std::pair{16, true}, std::pair{17, false}}) {
        const auto screen = parseWrittenScreen(std::vector<std::string>(count, "Total | €5.20"));
        EXPECT_EQ(layOut(screen, *parseWrittenAction("enter", screen)).has_value(), fits);
    }
}

}  // namespace
}  // namespace tandrel::PaymentGuard
