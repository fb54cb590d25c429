#include "payments/guard_patterns.h"

#include <memory>

#include "payments/guard_keywords.h"

namespace tandrel::PaymentGuard {
namespace {

// Characters that look like nothing, or like another one, stand here by number, since an editor, a
// formatter or a copy may change them unseen.
#define NO_BREAK_SPACE "\u00A0"
#define NARROW_NO_BREAK_SPACE "\u202F"
#define EN_DASH "\u2013"
#define CURLY_APOSTROPHE "\u2019"
#define LOW_QUOTE "\u201A"
#define MIDDLE_DOT "\u00B7"
#define BULLET "\u2022"
#define A_CIRCUMFLEX "\u00E2"
#define CAPITAL_A_CIRCUMFLEX "\u00C2"

// A currency: a symbol, a code as a whole word, or a symbol whose UTF-8 bytes were taken for
// Windows-1252 or Latin-1 on the way to the screen.
// clang-format off
#define CURRENCY                                                                                   \
    "(?:" A_CIRCUMFLEX R"([\u0082)" LOW_QUOTE "]"                                                  \
          "[\u00AC\u00B9\u00BD\u00A9\u00BA\u00B4\u00A6\u00B1]"                                     \
    "|" CAPITAL_A_CIRCUMFLEX "[\u00A3\u00A5]"                                                      \
    "|[$\u20AC\u00A3\u00A5\u20B9\u20BD\u20A9\u20BA\u20B4\u20A6\u20B1]"                             \
    R"(|\b(?:usd|eur|gbp|chf|sek|nok|dkk|pln|czk|huf|jpy|cny|inr|cad|aud|nzd|brl|mxn|zar|try)\b)"  \
    R"(|\bkr\.?))"

#define MONEY                                                                                      \
    "(?:" CURRENCY R"(\s?\d[\d.,]*))"                                                              \
    "|"                                                                                            \
    R"((?:\d[\d.,)" NO_BREAK_SPACE R"( ]*\s?)" CURRENCY ")"

struct PatternRow {
    Rule rule;
    Regex::Case letterCase;
    std::string_view pattern;
};

constexpr auto kAnyCase = Regex::Case::insensitive;
constexpr auto kExactCase = Regex::Case::sensitive;

constexpr PatternRow kPatternRows[] = {
    // A tapped label that pays, on a payment screen.
    {Rule::payment, kAnyCase,
     R"(\b(pay(\s+now)?|buy(\s+now)?|1-tap\s+buy|purchase|place\s+(your\s+)?order|check\s*out)"
     R"(|complete\s+(purchase|order|payment))"
     R"(|confirm\s+(and\s+pay|payment|purchase|order|transfer))"
     R"(|subscribe|start\s+(free\s+)?trial|donate|send\s+money|transfer|tip|top\s*up)"
     R"(|add\s+(money|funds|balance)|reload|withdraw)\b)"},
    // A tapped label that commits a form, on a payment screen.
    {Rule::commit, kAnyCase,
     R"(^\W*(confirm|continue|ok(ay)?|done|next|send|submit|proceed|approve|accept|agree|yes)"
     R"(|finish|complete|place|authori[sz]e|verify|redeem|apply|swipe|slide)\b)"},
    // An amount: a currency before the number, or after it.
    {Rule::money, kAnyCase, MONEY},
    // Words that make amounts a payment.
    {Rule::moneyWords, kAnyCase,
     R"(\b(total|amount|subtotal|balance|payment|pay|price|charged?|card\s+ending|iban|recipient)"
     R"(|beneficiary|order\s+summary|checkout|subscription|per\s+(month|year|week)|monthly|yearly)"
     R"(|in-app|top\s*up|gift\s+card|wallet|transfer|send\s+money|fee)\b)"},
    // A control that one slides to pay.
    {Rule::slide, kAnyCase,
     R"(\b(slide|swipe)\s+to\s+(pay|confirm|send|buy|order|transfer|approve|purchase)\b)"},
    // The phone's own payment sheet.
    {Rule::sheet, kAnyCase,
     R"(\b(double[-\s]?(click|press)\s+(the\s+side\s+button\s+)?to\s+)"
         R"((pay|confirm|purchase|subscribe|buy))"
     R"(|confirm\s+with\s+(the\s+)?(side\s+button|face\s*id|touch\s*id|passcode))"
     R"(|pay\s+with\s+(passcode|face\s*id|touch\s*id))"
     R"(|double[-\s]?click\s+(the\s+)?side\s+button)\b)"},
    // Further words that make amounts a payment: store sheets, bank transfers.
    {Rule::iosMoneyWords, kAnyCase,
     R"(\b(in-app\s+purchase|renews?|billed|shipping|delivery|tax|vat|order\s+total)"
     R"(|you('|)" CURLY_APOSTROPHE R"()ll\s+be\s+charged|apple\s+(cash|pay|account)|sort\s+code)"
     R"(|account\s+number|send|sending|to)\b)"},
    // A whole short line that is a button which commits.
    {Rule::commitButton, kAnyCase,
     R"(^\W*(confirm(\s+\w+)?|send(\s+(now|it|money|payment|\W.*))?|transfer(\s+now)?)"
     R"(|authori[sz]e|approve|complete|(slide|swipe)\s+to\s+\w+)\W*$)"},
    // A whole line that is unmistakably a pay button, on any screen.
    {Rule::strong, kAnyCase,
     R"(^\W*(pay(\s+(now|with\b.*)|\s*[^\sa-z].*)?|buy(\s+now)?|1-tap\s+buy)"
     R"(|purchase(\s+(now|for\b.*|[^\sa-z].*))?|place\s+(your\s+)?order)"
     R"(|complete\s+(purchase|order|payment))"
     R"(|confirm\s+(and\s+pay|payment|purchase|order|transfer|subscription))"
     R"(|subscribe(\s+(now|for\b.*|[^\sa-z].*))?|send\s+(money|payment)|check\s*out|top\s*up)"
     R"(|donate)\W*$)"},
    {Rule::passcode, kAnyCase, R"(\b(passcode|password)\b)"},
    // What a passcode is asked for when it pays.
    {Rule::passcodeContext, kAnyCase,
     R"(\b(apple\s+pay|purchase|payment|app\s+store|pay)\b)"},
    // A label that is nothing but a price.
    {Rule::priceOnly, kAnyCase, R"(^\W*(?:)" MONEY R"()\W*$)"},
    // A caption whose value is on the next line.
    {Rule::payeeLabel, kAnyCase,
     R"(^\W*(recipient|payee|beneficiary|pay\s+to|send\s+to|paying|sending\s+to|to|merchant)"
     R"(|account\s+name|name)\W*$)"},
    // Caption and value on one line.
    {Rule::payeeInline, kAnyCase,
     R"(^\W*(?:recipient|payee|beneficiary|merchant|account\s+name)\s*[:\-)" EN_DASH R"(]\s*(.+)$)"},
    // To whom, inside a line about money.
    {Rule::payeeTo, kAnyCase,
     R"((?:\bpaying\s+|\bto\s+)([\p{L}][\p{L}\p{N}.&')" CURLY_APOSTROPHE R"( -]{1,48}))"},
    // A button that names whom it pays.
    {Rule::payeePay, kAnyCase,
     R"(^\W*pay\s+(?!with\b|now\b|by\b|in\b|for\b|using\b))"
     R"(([\p{L}][\p{L}\p{N}.&')" CURLY_APOSTROPHE R"( -]{1,40})$)"},
    // A line that introduces a transfer.
    {Rule::moneyLine, kAnyCase, R"(^\W*(send|pay|paying|sending|transfer|to)\b)"},
    // Where the name of a recipient ends.
    {Rule::payeeCut, kAnyCase,
     R"(\s+(?:for|on|from|via|with|at|by)\s+|\s+[)" MIDDLE_DOT BULLET R"(|(])"},
    {Rule::iban, kExactCase,
     R"(\b[A-Z]{2}\d{2}(?:\s?[A-Z0-9]{4}){2,7}(?:\s?[A-Z0-9]{1,4})?\b)"},
    // The last four digits of a card or an account.
    {Rule::card, kAnyCase, R"(\b(?:card|account)\s+ending\s+(?:in\s+)?\W*(\d{4})\b)"},
    // Words that are never a recipient.
    {Rule::notPayee, kAnyCase,
     R"(^(the|a|an|your|my|this|pay|send|confirm|continue|money|now|passcode|side button)"
     R"(|face id|touch id)$)"},
    // A web address without its scheme, which is text to read and not a button.
    {Rule::webAddress, kAnyCase, R"(^\S+\.\S+/)"},
    // What a recognised amount or name may hold between its words.
    {Rule::spaces, kAnyCase, R"([\s)" NO_BREAK_SPACE NARROW_NO_BREAK_SPACE R"(]+)"},
    // A character with a numeric value in any script.
    {Rule::numeric, kAnyCase, R"([\P{Numeric_Type=None}])"},
    // A piece between white space.
    {Rule::word, kAnyCase, R"([^\p{White_Space}]+)"},
};
// clang-format on

struct CompiledRules {
    std::unique_ptr<const Regex> byRule[std::size(kPatternRows)];

    CompiledRules() {
        for (std::size_t i = 0; i < std::size(kPatternRows); ++i) {
            byRule[i] =
                std::make_unique<const Regex>(kPatternRows[i].pattern, kPatternRows[i].letterCase);
        }
    }
};

// A rule finds its row by its number.
consteval bool rowsFollowRules() {
    for (std::size_t i = 0; i < std::size(kPatternRows); ++i) {
        if (static_cast<std::size_t>(kPatternRows[i].rule) != i) return false;
    }
    return std::size(kPatternRows) == static_cast<std::size_t>(Rule::word) + 1;
}
static_assert(rowsFollowRules());

}  // namespace

std::string_view pattern(Rule rule) { return kPatternRows[static_cast<std::size_t>(rule)].pattern; }

const Regex& regex(Rule rule) {
    static const CompiledRules rules;
    return *rules.byRule[static_cast<std::size_t>(rule)];
}

namespace {

// The part of the text in which to search; none when nothing can be found.
std::optional<std::string_view> searched(Rule rule, std::string_view text) {
    if (rule == Rule::money) text = partWithAmounts(text);
    if (rule == Rule::money ? text.empty() : !mayMatch(rule, text)) return std::nullopt;
    return text;
}

}  // namespace

bool has(Rule rule, std::string_view text) {
    const auto part = searched(rule, text);
    return part && regex(rule).has(*part);
}

std::optional<std::string> first(Rule rule, std::string_view text) {
    const auto part = searched(rule, text);
    return part ? regex(rule).first(*part) : std::nullopt;
}

std::vector<std::string> all(Rule rule, std::string_view text, int group) {
    const auto part = searched(rule, text);
    return part ? regex(rule).all(*part, group) : std::vector<std::string>();
}

std::string replaceAll(Rule rule, std::string_view text, std::string_view replacement) {
    const auto part = searched(rule, text);
    if (!part) return std::string(text);
    std::string result(text.substr(0, static_cast<std::size_t>(part->data() - text.data())));
    result += regex(rule).replaceAll(*part, replacement);
    return result.append(part->end(), text.end());
}

}  // namespace tandrel::PaymentGuard
