#include "payments/guard_words.h"

#include <algorithm>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unicode/uchar.h>
#include <unicode/uscript.h>
#include <unicode/utf8.h>

#include "base/ascii.h"
#include "base/file.h"
#include "base/json.h"
#include "base/log.h"
#include "base/unicode.h"
#include "payments/folded_text.h"
#include "payments/guard_patterns.h"
#include "payments/printable.h"

namespace tandrel::PaymentGuard {
namespace {

constexpr std::size_t kMostWordsOfLine = 256;
constexpr std::size_t kLeastSpacedLetters = 3;
constexpr std::size_t kDenseSlack = 4;  // characters beside a phrase on a button without spaces

struct ListName {
    const char* name;
    Word kind;
};
// clang-format off
constexpr ListName kLists[] = {
    {"pay",       Word::pay},
    {"payStart",  Word::payStart},
    {"buy",       Word::buy},
    {"weakBuy",   Word::weakBuy},
    {"withAmount", Word::withAmount},
    {"transfer",  Word::transfer},
    {"commit",    Word::commit},
    {"money",     Word::money},
    {"offer",     Word::offer},
    {"offerHint", Word::offerHint},
    {"slide",     Word::slide},
    {"passcode",  Word::passcode},
    {"tip",       Word::tip},
    {"dismiss",   Word::dismiss},
    {"filler",    Word::filler},
    {"speech",    Word::speech},
    {"units",     Word::unit},
    {"due",       Word::due},
    {"settled",   Word::settled},
    {"harmless",  Word::harmless},
    {"harmlessEnd", Word::harmlessEnd},
    {"captionAlone", Word::captionAlone},
    {"consent",   Word::consent},
    {"object",    Word::object},
    {"overview",  Word::overview},
    {"soft",      Word::soft},
    {"otherCode", Word::otherCode},
    {"slideVerb", Word::slideVerb},
    {"buyLast",   Word::buyLast},
};
// clang-format on
// Lists that make the guard ask less.
constexpr Word kSoothing[] = {Word::dismiss,     Word::speech,   Word::settled, Word::harmless,
                              Word::harmlessEnd, Word::overview, Word::soft,    Word::otherCode};

std::uint32_t bit(Word kind) { return static_cast<std::uint32_t>(kind); }

bool isDenseLetter(UChar32 c) {
    UErrorCode status = U_ZERO_ERROR;
    const auto script = uscript_getScript(c, &status);
    return script == USCRIPT_HAN || script == USCRIPT_HIRAGANA || script == USCRIPT_KATAKANA ||
           script == USCRIPT_HANGUL || script == USCRIPT_THAI;
}

// Whether the text has a letter of a script that is written without spaces.
bool holdsDense(std::string_view text) {
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::int32_t i = 0; i < length;) {
        UChar32 c = 0;
        U8_NEXT(text.data(), i, length, c);
        if (c >= 0x0E00 && u_isalpha(c) && isDenseLetter(c)) return true;
    }
    return false;
}

std::vector<std::string_view> split(std::string_view folded) {
    std::vector<std::string_view> words;
    for (std::size_t at = 0; at < folded.size();) {
        const auto end = std::min(folded.find(' ', at), folded.size());
        if (end > at) words.push_back(folded.substr(at, end - at));
        at = end + 1;
    }
    return words;
}

std::string literally(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (std::string_view(R"(\^$.|?*+()[]{})").contains(c)) result.push_back('\\');
        result.push_back(c);
    }
    return result;
}

bool hasLetter(std::string_view text) {
    static const Regex letter(R"(\p{L})", Regex::Case::sensitive);
    return letter.has(text);
}

// A currency as it may stand beside a number. One of letters is a word of its own, but for the
// scripts without spaces.
std::string currencyPattern(const std::vector<std::string>& currencies) {
    std::vector<std::string> loose;
    std::vector<std::string> words;
    for (const auto& currency : currencies) {
        (hasLetter(currency) && !holdsDense(currency) ? words : loose)
            .push_back(literally(currency));
    }
    const auto longerFirst = [](const auto& a, const auto& b) { return a.size() > b.size(); };
    std::ranges::sort(loose, longerFirst);
    std::ranges::sort(words, longerFirst);
    return fmt::format(R"((?:{}|(?<!\p{{L}})(?:{})(?!\p{{L}})))", fmt::join(loose, "|"),
                       fmt::join(words, "|"));
}

// The part of a text in which an amount can be: its numbers and a currency's length around them, in
// whole words. Empty without a number.
std::string_view nearNumbers(std::string_view text) {
    constexpr std::size_t kCurrency = 24;  // bytes; the longest with its space, and a sign
    constexpr std::string_view kDigits = "0123456789";
    const auto first = text.find_first_of(kDigits);
    if (first == text.npos) return PaymentGuard::has(Rule::numeric, text) ? text : "";
    const auto last = text.find_last_of(kDigits);
    auto from = text.rfind(' ', first > kCurrency ? first - kCurrency : 0);
    if (from == text.npos) from = 0;
    const auto to = std::min(text.find(' ', std::min(last + kCurrency, text.size())), text.size());
    return text.substr(from, to - from);
}

// Whether a letter stands right before the part.
bool goesOnBefore(std::string_view text, std::string_view part) {
    const auto at = text.find(part);
    return at != text.npos && at > 0 && isAsciiLetter(text[at - 1]);
}

// The phrase as a recogniser that was not given its language reads it.
std::string misread(std::string phrase) {
    constexpr std::pair<std::string_view, std::string_view> kLetters[] = {
        {"ł", "t"}, {"ó", "e"}, {"ö", "e"}, {"ő", "e"}, {"ø", "e"}, {"ß", "b"}};
    for (const auto& [letter, read] : kLetters) {
        for (auto at = phrase.find(letter); at != phrase.npos; at = phrase.find(letter, at)) {
            phrase.replace(at, letter.size(), read);
        }
    }
    return phrase;
}

bool tells(std::string_view text) { return graphemeCount(text) >= 2; }

}  // namespace

struct GuardWords::Lists {
    std::vector<std::pair<std::string, std::uint32_t>> phrases;  // folded
    std::vector<std::string> currencies;                         // plain

    void add(const Lists& other) {
        phrases.insert(phrases.end(), other.phrases.begin(), other.phrases.end());
        currencies.insert(currencies.end(), other.currencies.begin(), other.currencies.end());
    }
};

bool Phrases::contains(Word kind) const {
    return std::ranges::any_of(hits, [&](const auto& hit) { return hit.kinds & bit(kind); });
}

bool Phrases::startsWith(Word kind) const {
    return std::ranges::any_of(
        hits, [&](const auto& hit) { return hit.starts && (hit.kinds & bit(kind)); });
}

bool Phrases::endsWith(Word kind) const {
    return std::ranges::any_of(
        hits, [&](const auto& hit) { return hit.ends && (hit.kinds & bit(kind)); });
}

bool Phrases::goesOnWith(Word kind) const {
    return std::ranges::any_of(
        hits, [&](const auto& hit) { return !hit.starts && (hit.kinds & bit(kind)); });
}

bool Phrases::isAll(Word kind) const {
    return std::ranges::any_of(hits,
                               [&](const auto& hit) { return hit.all && (hit.kinds & bit(kind)); });
}

Result<GuardWords::Lists> GuardWords::parse(std::string_view text, bool shipped) {
    const Json json = TRY(parseJson(text));
    if (!json.is_object()) return fail("it is not an object");
    Lists lists;
    const auto read = [&](const char* name, const auto& keep) -> Result<void> {
        const auto list = json.find(name);
        if (list == json.end()) return {};
        if (!list->is_array()) return fail(fmt::format("\"{}\" is not a list", name));
        for (const auto& entry : *list) {
            if (!entry.is_string()) return fail(fmt::format("\"{}\" holds no text", name));
            const auto& phrase = entry.template get_ref<const std::string&>();
            if (phrase.empty() || phrase.size() > kLongestPhrase || !keep(phrase)) {
                return fail(fmt::format("\"{}\" in \"{}\" can't be used", printable(phrase), name));
            }
            if (lists.phrases.size() + lists.currencies.size() > kMostPhrases) {
                return fail(fmt::format("it has more than {} phrases", kMostPhrases));
            }
        }
        return {};
    };
    for (const auto& [name, kind] : kLists) {
        const bool known = shipped || std::ranges::find(kSoothing, kind) == std::end(kSoothing);
        const bool anyLength = kind == Word::filler || kind == Word::speech || kind == Word::unit;
        TRY_VOID(read(name, [&](const std::string& phrase) {
            std::string form = folded(phrase);
            const auto words = split(form).size();
            if (words == 0 || words > kMostPhraseWords) return false;
            if (!anyLength && !holdsDense(phrase) && !tells(trimmed(form))) return false;
            if (!known) return true;
            std::string other = misread(phrase);
            if (other != phrase) lists.phrases.emplace_back(folded(other), bit(kind));
            lists.phrases.emplace_back(std::move(form), bit(kind));
            return true;
        }));
    }
    TRY_VOID(read("currencies", [&](const std::string& currency) {
        std::string form = plain(currency);
        if (trimmed(form).empty() || form.find_first_of("0123456789") != form.npos) return false;
        lists.currencies.push_back(trimmed(form));
        return true;
    }));
    if (lists.phrases.empty() && lists.currencies.empty()) return fail("it holds no words");
    return lists;
}

const GuardWords::Lists& GuardWords::shippedLists() {
    static const Lists lists = [] {
        Lists all;
        for (const auto& file : builtInWordFiles()) {
            const auto one = parse(file.content, true);
            if (!one) {
                fmt::print(stderr, "{}: {}\n", file.name, one.error().message);
                std::abort();
            }
            all.add(*one);
        }
        return all;
    }();
    return lists;
}

GuardWords::GuardWords(const Lists& lists) {
    for (const auto& [phrase, kinds] : lists.phrases) {
        if (!holdsDense(phrase)) {
            spaced_[trimmed(phrase)] |= kinds;
            const auto words = split(phrase);
            auto& longest = firstWords_[std::string(words.front())];
            longest = std::max(longest, words.size());
            if (kinds & bit(Word::pay)) {
                std::string letters = phrase;
                std::erase(letters, ' ');
                joined_[letters] |= kinds;
            }
            continue;
        }
        std::string dense = phrase;
        std::erase(dense, ' ');
        const auto known = std::ranges::find(dense_, dense, &decltype(dense_)::value_type::first);
        if (known == dense_.end()) {
            dense_.emplace_back(std::move(dense), kinds);
        } else {
            known->second |= kinds;
        }
    }
    std::vector<KeywordSearch::Keyword> keywords;
    for (const auto& currency : lists.currencies) keywords.push_back({currency, 1});
    currencies_ = std::make_unique<KeywordSearch>(keywords);
    const std::string currency = currencyPattern(lists.currencies);
    currency_ = std::make_unique<Regex>(currency, Regex::Case::sensitive);
    money_ = std::make_unique<Regex>(
        currency + R"(\s?\d[\d.,]*|(?<![\d.,])\d[\d.,\u00A0\u202F ]*)" + currency,
        Regex::Case::sensitive);
}

std::shared_ptr<const GuardWords> GuardWords::builtIn() {
    static const std::shared_ptr<const GuardWords> words(new GuardWords(shippedLists()));
    return words;
}

Result<std::shared_ptr<const GuardWords>> GuardWords::with(std::string_view file) {
    Lists lists = shippedLists();
    lists.add(TRY(parse(file, false)));
    return std::shared_ptr<const GuardWords>(new GuardWords(lists));
}

std::shared_ptr<const GuardWords> GuardWords::load(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().extension() == ".json") files.push_back(entry->path());
    }
    std::ranges::sort(files);
    const auto complain = [](const std::string& what) {
        log("payment guard: " + printable(what) + "; the words that shipped stay in force");
    };
    for (const auto& shipped : builtInWordFiles()) {
        const auto there = [&](const auto& file) { return file.filename() == shipped.name; };
        if (std::ranges::none_of(files, there)) {
            complain(fmt::format("{} is missing in {}", shipped.name, folder.string()));
        }
    }
    if (files.size() > kMostWordFiles) {
        complain(fmt::format("only the first {} word files are read", kMostWordFiles));
        files.resize(kMostWordFiles);
    }
    Lists lists = shippedLists();
    for (const auto& file : files) {
        const auto content = readFile(file, kLargestWordFile);
        const auto one = content ? parse(*content, false) : std::unexpected(content.error());
        if (one) {
            lists.add(*one);
        } else {
            complain(fmt::format("can't use {}: {}", file.string(), one.error().message));
        }
    }
    return std::shared_ptr<const GuardWords>(new GuardWords(lists));
}

void GuardWords::findSpaced(const std::vector<std::string_view>& words, Phrases& found) const {
    struct Place {
        std::uint32_t kinds;
        std::size_t first;
        std::size_t end;
    };
    std::vector<Place> places;
    std::vector<bool> filler(words.size());
    for (std::size_t first = 0; first < words.size(); ++first) {
        const auto begins = firstWords_.find(words[first]);
        if (begins == firstWords_.end()) continue;
        const std::size_t last = std::min(words.size(), first + begins->second);
        std::string phrase;
        for (std::size_t end = first + 1; end <= last; ++end) {
            if (!phrase.empty()) phrase += ' ';
            phrase += words[end - 1];
            const auto known = spaced_.find(phrase);
            if (known == spaced_.end()) continue;
            places.push_back({known->second, first, end});
            if (!(known->second & bit(Word::filler))) continue;
            for (std::size_t i = first; i < end; ++i) filler[i] = true;
        }
    }
    for (const auto& place : places) {
        bool all = true;
        for (std::size_t i = 0; i < words.size(); ++i) {
            all = all && ((i >= place.first && i < place.end) || filler[i]);
        }
        found.hits.push_back({place.kinds, place.first == 0, place.end == words.size(), all});
    }
}

void GuardWords::findDense(std::string text, Phrases& found) const {
    std::erase(text, ' ');
    for (const auto& [phrase, kinds] : dense_) {
        const auto at = text.find(phrase);
        if (at == text.npos) continue;
        const std::size_t slack = kinds & bit(Word::dismiss) ? 0 : kDenseSlack;
        const bool all = graphemeCount(text) - graphemeCount(phrase) <= slack;
        found.hits.push_back({kinds, at == 0, text.ends_with(phrase), all});
    }
}

void GuardWords::findLetters(const std::vector<std::string_view>& words, Phrases& found) const {
    if (words.size() < kLeastSpacedLetters || words.size() > kLongestPhrase) return;
    std::string letters;
    for (const auto& word : words) {
        if (graphemeCount(word) != 1) return;
        letters += word;
    }
    const auto known = joined_.find(letters);
    if (known == joined_.end()) return;
    found.words = 1;
    found.hits.push_back({known->second, true, true, true});
}

Phrases GuardWords::find(std::string_view foldedText) const {
    const auto words = split(foldedText);
    Phrases found{.hits = {}, .words = words.size()};
    if (words.size() <= kMostWordsOfLine) findSpaced(words, found);
    findLetters(words, found);
    found.dense = holdsDense(foldedText);
    if (found.dense) findDense(std::string(foldedText), found);
    return found;
}

// A search for an amount takes the square of the length on a row of numbers without a currency.
bool GuardWords::mayHoldCurrency(std::string_view text) const {
    return currencies_->marksOf(text) != 0 && currency_->has(text);
}

std::optional<std::string> GuardWords::amount(std::string_view plainText) const {
    const std::string_view near = nearNumbers(plainText);
    if (near.empty()) return std::nullopt;
    auto given = PaymentGuard::first(Rule::money, near);
    // The first layer reads "$ 8" out of "R$ 8".
    if ((!given || goesOnBefore(near, *given)) && mayHoldCurrency(near))
        given = money_->first(near);
    if (given) given = trimmed(*given);
    return given;
}

std::string GuardWords::withoutAmounts(std::string_view plainText) const {
    const std::string_view near = nearNumbers(plainText);
    if (near.empty()) return std::string(plainText);
    const auto from = static_cast<std::size_t>(near.data() - plainText.data());
    std::string rest = replaceAll(Rule::money, near, " ");
    if (!nearNumbers(rest).empty() && mayHoldCurrency(rest)) rest = money_->replaceAll(rest, " ");
    return std::string(plainText.substr(0, from)) + rest +
           std::string(plainText.substr(from + near.size()));
}

}  // namespace tandrel::PaymentGuard
