#include "payments/payment_guard.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/unicode.h"
#include "payments/guard_patterns.h"

namespace tandrel::PaymentGuard {
namespace {

constexpr double kUnsure = 0.3;  // a record read no better than this is dropped
constexpr double kJustSure = 0.31;
constexpr double kReach = 0.02;                 // of the frame's width
constexpr double kLeastReach = 6.0;             // pixels
constexpr double kTinySwipe = 0.03;             // fraction of the screen
constexpr std::size_t kLongestButtonLine = 32;  // characters
constexpr std::size_t kMostButtonLineWords = 4;
constexpr std::size_t kLongestButtonLabel = 40;
constexpr std::size_t kMostButtonLabelWords = 4;
constexpr std::size_t kLongestIconLabel = 2;

// Counts characters only where the bytes leave it open.
bool isLongerThan(std::string_view text, std::size_t characters) {
    return text.size() > characters && graphemeCount(text) > characters;
}

std::size_t words(std::string_view text) { return all(Rule::word, text).size(); }

std::string joined(const std::vector<std::string>& texts) {
    return fmt::format("{}", fmt::join(texts, "\n"));
}

bool isButtonLike(const std::string& label) {
    return !isLongerThan(label, kLongestButtonLabel) && words(label) <= kMostButtonLabelWords &&
           !label.contains("://") && !has(Rule::webAddress, label);
}

// One screen, as far as every kind of action needs it.
struct Seen {
    std::string joined;
    bool onPayment;
    std::optional<std::string> amount;

    explicit Seen(const std::vector<std::string>& texts)
        : joined(PaymentGuard::joined(texts)),
          onPayment(paymentScreen(texts)),
          amount(first(Rule::money, joined)) {
        if (amount) amount = trimmed(*amount);
    }
    std::string shown() const { return amount ? " showing " + *amount : ""; }
};

std::optional<std::string> assessSwipe(const Seen& screen) {
    const auto slider = first(Rule::slide, screen.joined);
    if (!slider) return std::nullopt;
    return fmt::format("a \"{}\" control{}", *slider,
                       screen.amount ? " for " + *screen.amount : "");
}

std::optional<std::string> assessEnter(const Seen& screen) {
    if (!screen.onPayment) return std::nullopt;
    return "Enter on a payment screen" + screen.shown();
}

std::optional<std::string> assessType(const Seen& screen, const std::string& text) {
    if (text.find_first_of("\r\n") != std::string::npos) return assessEnter(screen);
    if (screen.onPayment && has(Rule::passcode, screen.joined) && has(Rule::numeric, text)) {
        return "typing a passcode on a payment screen";
    }
    return std::nullopt;
}

// The order of the rows is their meaning: the first that holds decides.
std::optional<std::string> assessTap(const Seen& screen, const std::string& label) {
    const bool buttonLike = isButtonLike(label);
    const bool button = buttonLike && !label.empty();
    if (button && has(Rule::strong, label)) return fmt::format("a payment button (\"{}\")", label);
    if (button && has(Rule::priceOnly, label)) return fmt::format("a price button (\"{}\")", label);
    if (!screen.onPayment) return std::nullopt;
    if (label.empty()) return "an unlabelled spot on a payment screen" + screen.shown();
    if (!buttonLike) return std::nullopt;
    if (has(Rule::payment, label) || has(Rule::commit, label) ||
        !isLongerThan(label, kLongestIconLabel)) {
        return fmt::format("\"{}\" on a payment screen{}", label, screen.shown());
    }
    return std::nullopt;
}

}  // namespace

bool Action::isTinySwipe() const {
    return kind == Kind::swipe && x && x2 && std::abs(*x2 - *x) < kTinySwipe &&
           std::abs(y2.value_or(0) - y.value_or(0)) < kTinySwipe;
}

std::optional<Kind> kind(std::string_view name) {
    if (name == "tap") return Kind::tap;
    if (name == "swipe") return Kind::swipe;
    if (name == "enter") return Kind::enter;
    if (name == "type") return Kind::type;
    return std::nullopt;
}

std::vector<Line> lines(const Json& records) {
    std::vector<Line> result;
    if (!records.is_array()) return result;
    for (const auto& record : records) {
        auto text = textMember(record, "text");
        if (!text) continue;
        if (const auto sure = numberMember(record, "conf"); sure && !(*sure > kUnsure)) continue;
        *text = trimmed(*text);
        if (text->empty()) continue;
        const auto number = [&](const char* key) { return numberMember(record, key).value_or(0); };
        result.push_back({std::move(*text), number("x"), number("y"), number("w"), number("h")});
    }
    return result;
}

std::vector<Line> lines(const std::vector<TextRecord>& records) {
    std::vector<Line> result;
    for (const auto& record : records) {
        std::string text = trimmed(record.text);
        if (!(record.confidence > kUnsure) || text.empty()) continue;
        result.push_back({std::move(text), record.x, record.y, record.width, record.height});
    }
    return result;
}

std::vector<TextRecord> keepingAmounts(std::vector<TextRecord> records) {
    for (auto& record : records) {
        if (!(record.confidence > kUnsure) && has(Rule::money, record.text)) {
            record.confidence = kJustSure;
        }
    }
    return records;
}

std::vector<std::string> texts(const std::vector<Line>& lines) {
    std::vector<std::string> result;
    result.reserve(lines.size());
    for (const auto& line : lines) result.push_back(line.text);
    return result;
}

double tolerance(FrameSize frame) { return std::max(kReach * frame.width, kLeastReach); }

std::optional<std::string> label(std::optional<double> x, std::optional<double> y,
                                 const std::vector<Line>& lines, FrameSize frame) {
    if (!x || !y || !(frame.width > 0) || !(frame.height > 0)) return std::nullopt;
    const double px = *x * frame.width;
    const double py = *y * frame.height;
    const double reach = tolerance(frame);
    const Line* smallest = nullptr;
    for (const auto& line : lines) {
        const bool hit = line.x - reach <= px && px <= line.x + line.w + reach &&
                         line.y - reach <= py && py <= line.y + line.h + reach;
        if (hit && (!smallest || line.w * line.h < smallest->w * smallest->h)) smallest = &line;
    }
    if (!smallest) return std::nullopt;
    return smallest->text;
}

bool paymentScreen(const std::vector<std::string>& texts) {
    const std::string screen = joined(texts);
    if (has(Rule::sheet, screen) || has(Rule::slide, screen)) return true;
    if (has(Rule::passcode, screen) && has(Rule::passcodeContext, screen)) return true;
    if (!has(Rule::money, screen)) return false;
    if (!has(Rule::moneyWords, screen) && !has(Rule::iosMoneyWords, screen)) return false;
    return std::ranges::any_of(texts, [](const std::string& text) {
        return !isLongerThan(text, kLongestButtonLine) && words(text) <= kMostButtonLineWords &&
               (has(Rule::commitButton, text) || has(Rule::strong, text));
    });
}

std::optional<std::string> assess(const std::vector<Line>& lines, FrameSize frame,
                                  const Action& action) {
    const Seen screen(texts(lines));
    switch (action.kind) {
        case Kind::swipe:
            if (!action.isTinySwipe()) return assessSwipe(screen);
            break;
        case Kind::enter:
            return assessEnter(screen);
        case Kind::type:
            return assessType(screen, action.text.value_or(""));
        case Kind::tap:
            break;
    }
    return assessTap(screen, label(action.x, action.y, lines, frame).value_or(""));
}

}  // namespace tandrel::PaymentGuard
