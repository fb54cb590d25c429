#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/keyword_search.h"
#include "base/regex.h"
#include "base/result.h"

// The words, currencies and units that the wider guard knows, as read from the word files.
namespace tandrel::PaymentGuard {

// What a phrase means; the names are those of the lists in a word file.
enum class Word : std::uint32_t {
    pay = 1 << 0,            // a button that pays, wherever it is
    payStart = 1 << 1,       // what such a button begins with, whatever follows
    buy = 1 << 2,            // a verb that pays where an amount is on the screen
    weakBuy = 1 << 3,        // one that does so beside an amount, and otherwise means anything
    transfer = 1 << 4,       // a verb that moves the amount on its button
    commit = 1 << 5,         // a button that commits a form
    money = 1 << 6,          // a caption by which an amount is a payment
    offer = 1 << 7,          // speaks of a trial or of a subscription to be had
    offerHint = 1 << 8,      // does so only in the company of other such words
    slide = 1 << 9,          // the text of a slider that pays
    passcode = 1 << 10,      // asks for a secret
    tip = 1 << 11,           // asks for a tip
    dismiss = 1 << 12,       // a button that pays nothing
    filler = 1 << 13,        // may stand beside a phrase on its button
    speech = 1 << 14,        // is said to somebody, and not by a button
    unit = 1 << 15,          // what is bought and spent inside an app
    due = 1 << 16,           // a caption of what is about to be paid, and to whom
    settled = 1 << 17,       // says that nothing is about to be paid: a receipt, an overview
    harmless = 1 << 18,      // what a button that pays nothing begins with
    harmlessEnd = 1 << 19,   // what such a button ends with
    withAmount = 1 << 20,    // a verb that pays when its button holds an amount
    captionAlone = 1 << 21,  // a caption as `money` is, where it is a line of its own: "To"
    consent = 1 << 22,       // in a sentence that says that the button pays: "will be charged"
    object = 1 << 23,        // what is paid, placed or sent: "order", "tip", "bid"
    overview = 1 << 24,      // heads a list of money that is there, unless much speaks of paying
    soft = 1 << 25,          // begins or ends a harmless button, unless much speaks of paying
    otherCode = 1 << 26,     // a code that is no secret: "promo code"
    slideVerb = 1 << 27,     // what a slider begins or ends with, whatever it does
    buyLast = 1 << 28,       // as `buy`, at the end: where verbs come last, "Plätze kaufen"
};

// A phrase found in a text, and where.
struct PhraseHit {
    std::uint32_t kinds;
    bool starts;  // the text begins with it
    bool ends;    // the text ends with it
    bool all;     // nothing but fillers stands beside it
};

// A text with the phrases in it.
struct Phrases {
    std::vector<PhraseHit> hits;
    std::size_t words = 0;
    bool dense = false;  // of a script without spaces between words

    bool contains(Word kind) const;
    bool isAll(Word kind) const;
    bool startsWith(Word kind) const;
    bool endsWith(Word kind) const;
    // Behind its beginning.
    bool goesOnWith(Word kind) const;
};

// One word file, by name and content.
struct WordFile {
    std::string_view name;
    std::string_view content;
};
// The files as they shipped.
std::span<const WordFile> builtInWordFiles();

inline constexpr std::size_t kLargestWordFile = 256u << 10;  // bytes
inline constexpr std::size_t kMostWordFiles = 64;
inline constexpr std::size_t kMostPhrases = 3'000;  // of one file
inline constexpr std::size_t kLongestPhrase = 80;   // bytes
inline constexpr std::size_t kMostPhraseWords = 7;

// Immutable once made; any thread.
class GuardWords {
 public:
    // Those that shipped with the program.
    static std::shared_ptr<const GuardWords> builtIn();
    // Those together with what the files of the folder add. A file can only add: one that is
    // missing, broken or emptied leaves the words that shipped, with a line in the log, and a
    // phrase that makes buttons harmless counts only when it shipped.
    static std::shared_ptr<const GuardWords> load(const std::filesystem::path& folder);
    // The built-in words and one more file; the error says what is wrong with it.
    static Result<std::shared_ptr<const GuardWords>> with(std::string_view file);

    Phrases find(std::string_view foldedText) const;

    // Of a text made plain: an amount with its currency, as shown; the text with its amounts taken
    // out.
    std::optional<std::string> amount(std::string_view plainText) const;
    std::string withoutAmounts(std::string_view plainText) const;

 private:
    struct Lists;
    // So that a part of a text is looked up without a copy.
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const {
            return std::hash<std::string_view>()(text);
        }
    };
    explicit GuardWords(const Lists& lists);
    static Result<Lists> parse(std::string_view text, bool shipped);
    static const Lists& shippedLists();
    bool mayHoldCurrency(std::string_view plainText) const;
    void findSpaced(const std::vector<std::string_view>& words, Phrases& found) const;
    void findDense(std::string text, Phrases& found) const;
    void findLetters(const std::vector<std::string_view>& words, Phrases& found) const;

    std::unordered_map<std::string, std::uint32_t> spaced_;
    // The words that phrases begin with, and of how many words the longest of these is.
    std::unordered_map<std::string, std::size_t, TextHash, std::equal_to<>> firstWords_;
    // Pay phrases without their spaces, for a text in s p a c e d letters.
    std::unordered_map<std::string, std::uint32_t> joined_;
    // Of scripts that put no spaces between words, found anywhere in a text.
    std::vector<std::pair<std::string, std::uint32_t>> dense_;
    std::unique_ptr<const KeywordSearch> currencies_;
    std::unique_ptr<const Regex> currency_;
    std::unique_ptr<const Regex> money_;
};

}  // namespace tandrel::PaymentGuard
