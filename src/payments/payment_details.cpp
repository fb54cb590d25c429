#include "payments/payment_details.h"

#include <algorithm>
#include <span>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/unicode.h"
#include "payments/guard_patterns.h"

namespace tandrel::PaymentGuard {
namespace {

constexpr std::size_t kLongestPayee = 48;           // characters of a captioned recipient
constexpr std::size_t kShortestCaptionedValue = 2;  // characters of the line below a caption
constexpr std::size_t kLongestCaptionedValue = 60;
constexpr std::size_t kShortestNamedPayee = 2;

struct Repair {
    std::string_view wrong;
    std::string_view symbol;
};

// UTF-8 of a currency symbol read as Latin-1 or, where it differs, as Windows-1252. In the
// three-byte symbols the middle byte 0x82 becomes U+201A there and U+0082 here.
constexpr Repair kRepairs[] = {
    {"\u00C2\u00A3", "\u00A3"},       {"\u00C2\u00A5", "\u00A5"},
    {"\u00E2\u201A\u00AC", "\u20AC"}, {"\u00E2\xC2\x82\u00AC", "\u20AC"},
    {"\u00E2\u201A\u00B9", "\u20B9"}, {"\u00E2\xC2\x82\u00B9", "\u20B9"},
    {"\u00E2\u201A\u00BD", "\u20BD"}, {"\u00E2\xC2\x82\u00BD", "\u20BD"},
    {"\u00E2\u201A\u00A9", "\u20A9"}, {"\u00E2\xC2\x82\u00A9", "\u20A9"},
    {"\u00E2\u201A\u00BA", "\u20BA"}, {"\u00E2\xC2\x82\u00BA", "\u20BA"},
    {"\u00E2\u201A\u00B4", "\u20B4"}, {"\u00E2\xC2\x82\u00B4", "\u20B4"},
    {"\u00E2\u201A\u00A6", "\u20A6"}, {"\u00E2\xC2\x82\u00A6", "\u20A6"},
    {"\u00E2\u201A\u00B1", "\u20B1"}, {"\u00E2\xC2\x82\u00B1", "\u20B1"},
};

void replaceAll(std::string& text, std::string_view wrong, std::string_view right) {
    for (auto at = text.find(wrong); at != std::string::npos;
         at = text.find(wrong, at + right.size())) {
        text.replace(at, wrong.size(), right);
    }
}

void keep(std::vector<std::string>& list, std::string entry) {
    if (entry.empty() || std::ranges::find(list, entry) != list.end()) return;
    list.push_back(std::move(entry));
}

bool hasLength(std::string_view text, std::size_t least, std::size_t most) {
    const std::size_t length = graphemeCount(text);
    return length >= least && length <= most;
}

enum class Amount { none, shown };

// The rules of one line, in their order. `amount` says whether it holds one; `next` is the line
// below it, or none.
void collectPayees(const std::string& line, Amount amount, const std::string* next,
                   std::vector<std::string>& payees) {
    const auto inlined = all(Rule::payeeInline, line, 1);
    if (!inlined.empty()) keep(payees, firstGraphemes(norm(inlined.front()), kLongestPayee));

    if (next != nullptr && has(Rule::payeeLabel, line) &&
        hasLength(*next, kShortestCaptionedValue, kLongestCaptionedValue) &&
        !has(Rule::money, *next)) {
        keep(payees, firstGraphemes(norm(*next), kLongestPayee));
    }

    const auto paid = all(Rule::payeePay, line, 1);
    if (!paid.empty() && !has(Rule::money, paid.front()) &&
        !has(Rule::notPayee, trimmed(paid.front()))) {
        keep(payees, norm(paid.front()));
    }

    if (amount == Amount::shown || has(Rule::moneyLine, line)) {
        for (std::string name : all(Rule::payeeTo, line, 1)) {
            if (const auto cut = regex(Rule::payeeCut).firstMatch(name)) name.resize(cut->start);
            name = trimmed(name);
            if (graphemeCount(name) >= kShortestNamedPayee && !has(Rule::notPayee, name)) {
                keep(payees, norm(name));
            }
        }
    }

    for (const auto& iban : all(Rule::iban, line)) keep(payees, norm(iban));
    for (const auto& digits : all(Rule::card, line, 1)) {
        keep(payees, norm("card ending " + digits));
    }
}

std::string joined(std::span<const std::string> list, std::size_t most, std::string_view between) {
    return fmt::format("{}", fmt::join(list.first(std::min(most, list.size())), between));
}

std::string keyOf(const std::vector<std::string>& list) {
    std::vector<std::string> entries;
    for (const auto& entry : list) {
        entries.push_back(lowerCased(regex(Rule::spaces).replaceAll(entry, "")));
    }
    std::ranges::sort(entries);
    return fmt::format("{}", fmt::join(entries, "|"));
}

}  // namespace

std::string norm(std::string_view text) {
    std::string result(text);
    if (result.find("\u00E2") != std::string::npos || result.find("\u00C2") != std::string::npos) {
        for (const auto& repair : kRepairs) replaceAll(result, repair.wrong, repair.symbol);
    }
    result = regex(Rule::spaces).replaceAll(result, " ");
    const auto begin = result.find_first_not_of(" \t");
    if (begin == std::string::npos) return {};
    result = result.substr(begin, result.find_last_not_of(" \t") - begin + 1);
    result.resize(result.find_last_not_of(".,:;?!") + 1);
    return result;
}

Details details(const std::vector<std::string>& texts) {
    Details result;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const auto amounts = all(Rule::money, texts[i]);
        for (const auto& amount : amounts) keep(result.amounts, norm(amount));
        collectPayees(texts[i], amounts.empty() ? Amount::none : Amount::shown,
                      i + 1 < texts.size() ? &texts[i + 1] : nullptr, result.payees);
    }
    return result;
}

std::string Details::summary() const {
    if (amounts.size() > 1) {
        std::string text = joined(amounts, 4, ", ");
        if (!payees.empty()) text += fmt::format(" (to {}?)", payees.front());
        return text;
    }
    if (payees.empty()) return amounts.empty() ? "no amount shown" : amounts.front();
    std::string text = "to " + payees.front();
    if (!amounts.empty()) text = amounts.front() + " " + text;
    if (payees.size() > 1) {
        text += fmt::format(" (also on screen: {})", joined(std::span(payees).subspan(1), 3, ", "));
    }
    return text;
}

std::string Details::title() const {
    if (amounts.size() > 1) {
        return "Approve a payment? Screen shows " + joined(amounts, 3, " and ");
    }
    if (amounts.empty()) return "Approve a payment?";
    if (payees.empty()) return fmt::format("Approve a payment of {}?", amounts.front());
    return fmt::format("Approve {} to {}?", amounts.front(), payees.front());
}

std::string Details::key() const { return "a=" + keyOf(amounts) + ";p=" + keyOf(payees); }

}  // namespace tandrel::PaymentGuard
