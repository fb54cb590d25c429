#include "text/score.h"

#include <algorithm>
#include <cstdio>

#include "base/unicode.h"

namespace tandrel {

namespace {

constexpr double kSimilar = 0.8;
constexpr double kSureEnough = 0.5;

void replaceAll(std::string& text, const std::string& what, const std::string& with) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
        text.replace(at, what.size(), with);
    }
}

std::string folded(std::string text) {
    for (const char* quote : {"‘", "’"}) replaceAll(text, quote, "'");
    for (const char* quote : {"“", "”", "„"}) replaceAll(text, quote, "\"");
    for (const char* dash : {"–", "—", "−"}) replaceAll(text, dash, "-");
    std::string result;
    for (const char c : trimmed(text)) {
        if (c != ' ' || result.empty() || result.back() != ' ') result += c;
    }
    return result;
}

double similarity(const std::string& a, const std::string& b) {
    const auto first = graphemes(a), second = graphemes(b);
    std::vector<std::size_t> row(second.size() + 1);
    for (std::size_t j = 0; j <= second.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= first.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= second.size(); ++j) {
            const std::size_t replaced = diagonal + (first[i - 1] != second[j - 1]);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
        }
    }
    const auto longest = static_cast<double>(std::max<std::size_t>(1, first.size()));
    return std::max(0.0, 1 - static_cast<double>(row.back()) / longest);
}

PixelBox boxOf(const TextRecord& record) {
    return {static_cast<int>(record.x), static_cast<int>(record.y),
            static_cast<int>(record.x + record.width), static_cast<int>(record.y + record.height)};
}

double area(const PixelBox& box) {
    return box.empty() ? 0.0 : static_cast<double>(box.width()) * box.height();
}

bool mayBe(const TextRecord& record, const KnownLine& line) {
    if (!line.box) return true;
    const double shared = area(line.box->intersected(boxOf(record)));
    return shared > 0.3 * std::min(area(*line.box), area(boxOf(record)));
}

bool hasDigit(const std::string& text) {
    return text.find_first_of("0123456789") != std::string::npos;
}

// Matches records and lines one to one, the most similar pairs first.
class Matching {
 public:
    Matching(const KnownFrame& frame, const std::vector<TextRecord>& records)
        : recordOf(frame.lines.size(), -1),
          likeness(frame.lines.size(), 0.0),
          used(records.size(), false) {
        struct Pair {
            double likeness;
            std::size_t line, record;
        };
        std::vector<Pair> pairs;
        for (std::size_t i = 0; i < frame.lines.size(); ++i) {
            for (std::size_t j = 0; j < records.size(); ++j) {
                if (!mayBe(records[j], frame.lines[i])) continue;
                const double like =
                    similarity(folded(frame.lines[i].text), folded(records[j].text));
                if (like > 0) pairs.push_back({like, i, j});
            }
        }
        std::ranges::stable_sort(pairs, std::ranges::greater{}, &Pair::likeness);
        for (const Pair& pair : pairs) {
            if (recordOf[pair.line] >= 0 || used[pair.record]) continue;
            recordOf[pair.line] = static_cast<int>(pair.record);
            likeness[pair.line] = pair.likeness;
            if (pair.likeness >= 0.5 || frame.lines[pair.line].box) used[pair.record] = true;
        }
    }

    std::vector<int> recordOf;
    std::vector<double> likeness;
    std::vector<bool> used;
};

bool holds(const std::string& text, const std::string& part) {
    return graphemeCount(part) >= 3 && text.find(part) != std::string::npos;
}

bool isLetter(char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; }

// The lists of lines of real screenshots leave out some of the text. What reads like a word or a
// figure is taken for such text.
bool readsLikeText(const std::string& text) {
    int run = 0;
    for (const char c : text) {
        run = isLetter(c) ? run + 1 : 0;
        if (run >= 3 || (c >= '0' && c <= '9' && text.size() > 1)) return true;
    }
    return false;
}

// They leave out the keys of keyboards, too.
bool showsKeyboard(const std::vector<TextRecord>& records) {
    return std::ranges::count_if(records, [](const TextRecord& record) {
               return record.text.size() == 1 && isLetter(record.text[0]);
           }) >= 10;
}

// Whether a record without a line of its own shows text of known lines all the same.
bool isOnKnownText(const TextRecord& record, const KnownFrame& frame, bool keyboard) {
    const bool hasBoxes = !frame.lines.empty() && frame.lines.front().box;
    if (!hasBoxes && readsLikeText(record.text)) return true;
    if (!hasBoxes && keyboard && graphemeCount(record.text) == 1) return true;
    return std::ranges::any_of(frame.lines, [&](const KnownLine& line) {
        if (line.box) return mayBe(record, line);
        return holds(folded(record.text), folded(line.text)) ||
               holds(folded(line.text), folded(record.text));
    });
}

bool isMerged(const TextRecord& record, const KnownFrame& frame) {
    const std::string text = folded(record.text);
    int held = 0;
    for (const KnownLine& line : frame.lines) {
        const std::string known = folded(line.text);
        if (known == text) return false;
        const bool here =
            !line.box || area(line.box->intersected(boxOf(record))) > 0.5 * area(*line.box);
        if (here && (line.box ? true : holds(text, known))) ++held;
    }
    return held > 1;
}

}  // namespace

void Score::add(const Score& other) {
    for (auto member : {&Score::lines, &Score::exact, &Score::similar, &Score::amounts,
                        &Score::exactAmounts, &Score::wrongAmounts, &Score::payLabels,
                        &Score::exactPayLabels, &Score::junk, &Score::merged}) {
        this->*member += other.*member;
    }
}

Score scoreFrame(const KnownFrame& frame, const std::vector<TextRecord>& records, Details details) {
    const Matching matching(frame, records);
    const bool print = details == Details::kPrint;
    Score score;
    for (std::size_t i = 0; i < frame.lines.size(); ++i) {
        const KnownLine& line = frame.lines[i];
        const int index = matching.recordOf[i];
        const TextRecord read =
            index >= 0 ? records[static_cast<std::size_t>(index)] : TextRecord{};
        const bool exact = index >= 0 && folded(read.text) == folded(line.text);
        if (line.isOptional) continue;
        ++score.lines;
        score.exact += exact;
        score.similar += matching.likeness[i] >= kSimilar;
        score.amounts += line.isAmount;
        score.exactAmounts += line.isAmount && exact;
        score.payLabels += line.isPayLabel;
        score.exactPayLabels += line.isPayLabel && exact;
        const bool wrong = line.isAmount && !exact && index >= 0 && read.confidence > kSureEnough &&
                           hasDigit(read.text) && (line.box || matching.likeness[i] >= 0.5);
        score.wrongAmounts += wrong;
        if (print && !exact) {
            std::printf("  %s: \"%s\" read as \"%s\" %.2f [%.0f %.0f %.0f %.0f]%s\n",
                        frame.name.c_str(), line.text.c_str(), read.text.c_str(), read.confidence,
                        read.x, read.y, read.width, read.height, wrong ? " WRONG AMOUNT" : "");
        }
    }
    const bool keyboard = showsKeyboard(records);
    for (std::size_t j = 0; j < records.size(); ++j) {
        const TextRecord& record = records[j];
        const bool junk = !matching.used[j] && record.confidence >= kSureEnough &&
                          !isOnKnownText(record, frame, keyboard);
        const bool merged = isMerged(record, frame);
        score.junk += junk;
        score.merged += merged;
        const bool unlisted = !matching.used[j] && !junk;
        if (print && (junk || merged || unlisted)) {
            std::printf("  %s: %s \"%s\" %.2f [%.0f %.0f %.0f %.0f]\n", frame.name.c_str(),
                        merged ? "MERGED"
                        : junk ? "junk"
                               : "unlisted",
                        record.text.c_str(), record.confidence, record.x, record.y, record.width,
                        record.height);
        }
    }
    return score;
}

}  // namespace tandrel
