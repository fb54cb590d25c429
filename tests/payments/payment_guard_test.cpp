#include "payments/payment_guard.h"

#include <gtest/gtest.h>

#include "payments/guard_patterns.h"
#include "payments/parts.h"

namespace tandrel::PaymentGuard {
namespace {

constexpr FrameSize kFrame{1206, 2622};

// One line a text, 100 pixels apart, the first at the top.
std::vector<Line> rows(std::string_view written) {
    std::vector<Line> result;
    for (const auto& text : parts(written)) {
        result.push_back({text, 100, 100.0 + 100.0 * static_cast<double>(result.size()), 800, 50});
    }
    return result;
}

Action tapOnRow(int row) {
    return {.kind = Kind::tap, .x = 500 / kFrame.width, .y = (125.0 + 100.0 * row) / kFrame.height};
}

Action tapNowhere() { return {.kind = Kind::tap, .x = 0.5, .y = 0.95}; }

Action swipe(double x, double y, double x2, double y2) {
    return {.kind = Kind::swipe, .x = x, .y = y, .x2 = x2, .y2 = y2};
}

const Action kEnter = {.kind = Kind::enter};

Action type(std::string text) { return {.kind = Kind::type, .text = std::move(text)}; }

const char* const kTransfer = "Recipient / Ilse Varga / Amount / €25.00 / Confirm";

const char* const kSlide = "Slide to pay / €25.00";

// A name, a screen's rows, what is done on it and the verdict; empty: it is not asked about.
const std::tuple<const char*, const char*, Action, const char*> kAssessCases[] = {
    {"strong label, no other money words", "Hello / Pay €12.50", tapOnRow(1),
     "a payment button (\"Pay €12.50\")"},
    {"price alone", "Hello / €25.00", tapOnRow(1), "a price button (\"€25.00\")"},
    {"price with no-break spaces", "1\u00A0234\u00A0567,50\u00A0€", tapOnRow(0),
     "a price button (\"1\u00A0234\u00A0567,50\u00A0€\")"},
    {"mis-decoded pound", "Â£9.99", tapOnRow(0), "a price button (\"Â£9.99\")"},
    {"mis-decoded euro, C1 form",
     "\u00E2\xC2\x82\u00AC"
     "5",
     tapOnRow(0),
     "a price button (\"\u00E2\xC2\x82\u00AC"
     "5\")"},
    {"commit word on a payment screen", kTransfer, tapOnRow(4),
     "\"Confirm\" on a payment screen showing €25.00"},
    {"commit word elsewhere", "Chapter 1 / Confirm", tapOnRow(1), ""},
    {"no label on a payment screen", kTransfer, tapNowhere(),
     "an unlabelled spot on a payment screen showing €25.00"},
    {"no label elsewhere", "€25.00", tapNowhere(), ""},
    {"harmless label on a payment screen", kTransfer, tapOnRow(1), ""},
    {"two characters on a payment screen", "Total €5 / Confirm / OK / ab", tapOnRow(3),
     "\"ab\" on a payment screen showing €5"},
    {"three characters on a payment screen", "Total €5 / Confirm / abc", tapOnRow(2), ""},
    {"two emoji of many bytes are two characters",
     "Total €5 / Confirm / 👨‍👩‍👧🇩🇪", tapOnRow(2),
     "\"👨‍👩‍👧🇩🇪\" on a payment screen showing €5"},
    {"four words are a button", "Pay now with card", tapOnRow(0), ""},
    {"five words are not", "Total €5 / Confirm / please confirm the whole order", tapOnRow(2), ""},
    {"four words with a payment word", "Total €5 / Confirm / tap to confirm transfer", tapOnRow(2),
     "\"tap to confirm transfer\" on a payment screen showing €5"},
    {"40 characters are a button", "Total €5 / Confirm / transfer 6789012345678901234567890123456",
     tapOnRow(2), "\"transfer 6789012345678901234567890123456\" on a payment screen showing €5"},
    {"41 are not", "Total €5 / Confirm / transfer 67890123456789012345678901234567", tapOnRow(2),
     ""},
    {"a sentence about paying", "Remember to pay rent on Friday", tapOnRow(0), ""},
    {"a web address", "Total €5 / Confirm / pay.example.com/now", tapOnRow(2), ""},
    {"a web address with a scheme", "Total €5 / Confirm / https://buy", tapOnRow(2), ""},
    {"Enter", kTransfer, kEnter, "Enter on a payment screen showing €25.00"},
    {"Enter, no amount", "Confirm with Face ID", kEnter, "Enter on a payment screen"},
    {"Enter elsewhere", "Search / €25.00", kEnter, ""},
    {"typing a reference", kTransfer, type("ref 12345"), ""},
    {"typing a passcode", "Enter passcode to confirm payment", type("4821"),
     "typing a passcode on a payment screen"},
    {"typing an Arabic-Indic passcode", "Enter passcode to confirm payment", type("٤٨"),
     "typing a passcode on a payment screen"},
    {"typing letters at a passcode", "Enter passcode to confirm payment", type("hello"), ""},
    {"typing digits at a passcode that pays nothing", "Enter passcode", type("4821"), ""},
    {"typing a line feed", kTransfer, type("hello\n"), "Enter on a payment screen showing €25.00"},
    {"typing a carriage return", kTransfer, type("hello\rworld"),
     "Enter on a payment screen showing €25.00"},
    {"typing nothing", "Enter passcode to confirm payment", {.kind = Kind::type}, ""},
    {"tiny swipe is a tap", kTransfer, swipe(500 / 1206.0, 525 / 2622.0, 0.42, 0.21),
     "\"Confirm\" on a payment screen showing €25.00"},
    {"swipe of 0.03 is a swipe", kTransfer, swipe(0.25, 0.2, 0.28, 0.2), ""},
    {"swipe of 0.03 downwards, too", kTransfer, swipe(0.25, 0.25, 0.25, 0.28), ""},
    {"swipe without an end is a swipe",
     kTransfer,
     {.kind = Kind::swipe, .x = 500 / 1206.0, .y = 525 / 2622.0},
     ""},
    {"missing heights count as 0",
     kTransfer,
     {.kind = Kind::swipe, .x = 0.1, .x2 = 0.1},
     "an unlabelled spot on a payment screen showing €25.00"},
    {"slider", kSlide, swipe(0.2, 0.5, 0.8, 0.5), "a \"Slide to pay\" control for €25.00"},
    {"slider, no amount", "Swipe  to\u00A0send", swipe(0.2, 0.5, 0.8, 0.5),
     "a \"Swipe  to\u00A0send\" control"},
    {"slider, upwards", kSlide, swipe(0.5, 0.8, 0.5, 0.2), "a \"Slide to pay\" control for €25.00"},
};

TEST(PaymentGuard, AssessFollowsItsTable) {
    for (const auto& [name, screen, action, verdict] : kAssessCases) {
        EXPECT_EQ(assess(rows(screen), kFrame, action).value_or(""), verdict) << name;
    }
}

TEST(PaymentGuard, PaymentScreenNeedsAmountWordAndButton) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"nothing", "", false},
        {"amount, word and button", "Total €5 / Confirm", true},
        {"no button", "Total €5 / Oat milk / Rye bread", false},
        {"no amount", "Total 5 / Confirm", false},
        {"no word", "€5 / Confirm", false},
        {"a word of the second list", "€5 incl. VAT / Confirm", true},
        {"button of four words", "Total €5 / Confirm / x", true},
        {"button line of five words", "Total €5 / send + + + +", false},
        {"button line of four words", "Total €5 / send + + +", true},
        {"button line of 33 characters", "Total €5 / purchase 10000000000000000000000!", false},
        {"button line of 32 characters", "Total €5 / purchase 1000000000000000000000!", true},
        {"side button anywhere", "Double-click the side button to pay", true},
        {"side button, no word pay", "Double click side button", true},
        {"slider alone", "swipe to approve", true},
        {"passcode for a payment", "Passcode / Apple Pay", true},
        {"passcode alone", "Enter Passcode", false},
        {"word inside another word", "€5 / Subtotals / Confirmed", false},
        {"capitals", "TOTAL EUR 5 / CONFIRM", true},
        {"amount split over two lines", "Total / 25 / EUR / Confirm", true},
    };
    for (const auto& [name, texts, pays] : cases)
        EXPECT_EQ(paymentScreen(parts(texts)), pays) << name;
}

TEST(PaymentGuard, LabelIsTheSmallestLineWithinReach) {
    const std::vector<Line> lines = {
        {"outer", 40, 40, 100, 60}, {"inner", 60, 50, 30, 20}, {"twin", 60, 50, 20, 30}};
    const FrameSize frame{200, 400};  // a fiftieth of the width is below the least reach of 6
    const std::tuple<const char*, double, double, std::optional<std::string>> cases[] = {
        {"inside all", 65, 60, "inner"},
        {"outer only", 130, 90, "outer"},
        {"5 outside the left", 35, 70, "outer"},
        {"6 outside the left", 34, 70, "outer"},
        {"7 outside the left", 33, 70, {}},
        {"6 outside the right", 146, 70, "outer"},
        {"7 outside the right", 147, 70, {}},
        {"6 above", 130, 34, "outer"},
        {"7 above", 130, 33, {}},
        {"6 below", 130, 106, "outer"},
        {"7 below", 130, 107, {}},
    };
    for (const auto& [name, px, py, words] : cases) {
        EXPECT_EQ(label(px / 200, py / 400, lines, frame), words) << name;
    }
    EXPECT_EQ(label(std::nullopt, 0.2, lines, frame), std::nullopt);
    EXPECT_EQ(label(0.3, std::nullopt, lines, frame), std::nullopt);
    EXPECT_EQ(label(0.3, 0.15, lines, {0, 400}), std::nullopt);
    EXPECT_EQ(label(0.3, 0.15, lines, {200, 0}), std::nullopt);
    // On a wide frame the reach grows: 24.12 pixels of 1206.
    EXPECT_EQ(label(876 / 1206.0, 0.1, {{"wide", 100, 250, 752, 20}}, {1206, 2622}), "wide");
    EXPECT_EQ(label(877 / 1206.0, 0.1, {{"wide", 100, 250, 752, 20}}, {1206, 2622}), std::nullopt);
}

TEST(PaymentGuard, LinesKeepOrderAndDropWhatIsUnsure) {
    const auto records = Json::parse(R"([
        {"text": "  Total\n", "conf": 0.31, "x": 1, "y": 2.5, "w": 3, "h": 4},
        {"text": "unsure", "conf": 0.3},
        {"text": "no confidence", "x": "7", "y": null},
        {"text": "confidence in words", "conf": "0.1"},
        {"text": 5}, {"conf": 1}, {"text": " \u00a0\t"}, "text", null, [1]
    ])");
    const std::vector<Line> expected = {{"Total", 1, 2.5, 3, 4},
                                        {"no confidence", 0, 0, 0, 0},
                                        {"confidence in words", 0, 0, 0, 0}};
    EXPECT_EQ(lines(records), expected);
    EXPECT_EQ(lines(Json::parse(R"({"text": "Total"})")), std::vector<Line>());
}

TEST(PaymentGuard, AnAmountReadBadlyIsKept) {
    const std::vector<TextRecord> records = {{"Total €25.00", 0.1, 1, 2, 3, 4},
                                             {"Ilse Varga", 0.3, 0, 0, 9, 9},
                                             {"€3", 0.3, 5, 6, 7, 8},
                                             {"Confirm", 0.9, 0, 0, 9, 9}};
    const std::vector<Line> expected = {
        {"Total €25.00", 1, 2, 3, 4}, {"€3", 5, 6, 7, 8}, {"Confirm", 0, 0, 9, 9}};
    EXPECT_EQ(lines(keepingAmounts(records)), expected);
    EXPECT_EQ(lines(records), std::vector<Line>({{"Confirm", 0, 0, 9, 9}}));
}

TEST(PaymentGuard, KindsByName) {
    EXPECT_EQ(kind("swipe"), Kind::swipe);
    EXPECT_EQ(kind("Tap"), std::nullopt);
    EXPECT_EQ(kind(""), std::nullopt);
}

}  // namespace
}  // namespace tandrel::PaymentGuard
