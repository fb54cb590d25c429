#include "payments/guard_keywords.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <unicode/uniset.h>
#include <unicode/unistr.h>

#include "base/ascii.h"
#include "base/keyword_search.h"

namespace tandrel::PaymentGuard {
namespace {

struct KeywordRow {
    Rule rule;
    // Every match of the rule holds one of these, between spaces here, in either letter case.
    std::string_view keywords;
};

constexpr std::size_t kLongestCurrency = 3;  // bytes, of these
// The symbols as they are and as what their bytes are taken for, the codes, and the crown.
constexpr std::string_view kCurrencies =
    "\u00E2 \u00C2 $ \u20AC \u00A3 \u00A5 \u20B9 \u20BD \u20A9 \u20BA \u20B4 \u20A6 \u20B1 "
    "usd eur gbp chf sek nok dkk pln czk huf jpy cny inr cad aud nzd brl mxn zar try kr";

// A rule without a row may match anything.
// clang-format off
constexpr KeywordRow kKeywordRows[] = {
    {Rule::payment,
     "pay buy purchase order check complete confirm subscribe trial donate money transfer tip top "
     "funds balance reload withdraw"},
    {Rule::money, kCurrencies},
    {Rule::moneyWords,
     "total amount balance pay price charge card iban recipient beneficiary order checkout "
     "subscription per month year in-app top wallet transfer money fee"},
    {Rule::slide, "slide swipe"},
    {Rule::sheet, "double confirm pay"},
    {Rule::iosMoneyWords,
     "in-app renew bill ship deliver tax vat order charged apple sort account send to"},
    {Rule::commitButton, "confirm send transfer authori approve complete slide swipe"},
    {Rule::strong,
     "pay buy purchase order complete confirm subscribe send check top donate"},
    {Rule::passcode, "pass"},
    {Rule::passcodeContext, "pay purchase app"},
    {Rule::priceOnly, kCurrencies},
    {Rule::payeeLabel, "recipient pay beneficiary send to merchant name"},
    {Rule::payeeInline, "recipient payee beneficiary merchant account"},
    {Rule::payeeTo, "paying to"},
    {Rule::payeePay, "pay"},
    {Rule::moneyLine, "send pay transfer to"},
    {Rule::card, "ending"},
};
// clang-format on

constexpr std::uint64_t bit(Rule rule) { return std::uint64_t{1} << static_cast<unsigned>(rule); }
static_assert(static_cast<unsigned>(Rule::word) < std::numeric_limits<std::uint64_t>::digits);

// A search that ignores letter case takes some other letters for ASCII ones: the long s, the Kelvin
// sign, ligatures such as "fi".
std::vector<std::string> lettersTakenForAscii() {
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeSet folding(u"[[:Changes_When_Casefolded:]-[:ASCII:]]", status);
    std::vector<std::string> result;
    for (std::int32_t i = 0; i < folding.size(); ++i) {
        const icu::UnicodeString letter(folding.charAt(i));
        const icu::UnicodeString plain = icu::UnicodeString(letter).foldCase();
        bool ascii = false;
        for (std::int32_t at = 0; at < plain.length(); ++at) ascii |= plain[at] < 0x80;
        if (ascii) letter.toUTF8String(result.emplace_back());
    }
    return result;
}

struct Keywords {
    std::uint64_t known = 0;  // rules with a row
    KeywordSearch search;

    Keywords() : search(all(known)) {}

    static KeywordSearch all(std::uint64_t& known) {
        std::vector<KeywordSearch::Keyword> keywords;
        for (const auto& row : kKeywordRows) {
            known |= bit(row.rule);
            for (std::size_t at = 0; at < row.keywords.size();) {
                const auto end = std::min(row.keywords.find(' ', at), row.keywords.size());
                keywords.push_back({row.keywords.substr(at, end - at), bit(row.rule)});
                at = end + 1;
            }
        }
        const auto letters = lettersTakenForAscii();
        for (const auto& letter : letters) keywords.push_back({letter, ~std::uint64_t{0}});
        return KeywordSearch(keywords);
    }
};

const Keywords& keywords() {
    static const Keywords instance;
    return instance;
}

// What may stand between the beginning of an amount and its currency; of other characters than
// ASCII any.
bool isBetween(char c) {
    return static_cast<unsigned char>(c) >= 0x80 ||
           std::string_view("0123456789., \t\n\f\r\v").contains(c);
}

}  // namespace

bool mayMatch(Rule rule, std::string_view text) {
    return !(keywords().known & bit(rule)) || (keywords().search.marksOf(text) & bit(rule));
}

std::string_view partWithAmounts(std::string_view text) {
    const auto currencies = keywords().search.find(text, bit(Rule::money));
    if (!currencies) return {};
    // Back over the currency, or the word that it may be, and the number before it.
    std::size_t from = currencies->firstEnd - std::min(currencies->firstEnd, kLongestCurrency);
    while (from > 0 && isAsciiLetter(text[from - 1])) --from;
    while (from > 0 && isBetween(text[from - 1])) --from;
    const auto gap = text.rfind(' ', from);
    from = gap == text.npos ? 0 : gap;
    // A space may stand before the number behind it; there is none within.
    std::size_t to = text.find(' ', currencies->lastEnd);
    if (to != text.npos) to = text.find(' ', to + 1);
    return text.substr(from, to == text.npos ? to : to - from);
}

}  // namespace tandrel::PaymentGuard
