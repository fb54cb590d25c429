#include "reading/line_reading.h"

#include <array>
#include <atomic>
#include <cctype>

#include "base/unicode.h"
#include "reading/point_marks.h"
#include "reading/text_marks.h"

namespace tandrel {

namespace {

// How a strip is made for each look at it.
struct Look {
    double padding;
    float sharpening;
};
constexpr std::array<Look, 3> kLooks = {{{0.15, 0}, {0.4, 0.3f}, {0.25, 0}}};

// Small enough that the clock is looked at often and two threads share the work evenly, large
// enough that the weights are fetched for many lines at once.
constexpr int kColumnsPerBatch = 3000;

// A digit, point or comma less probable than this may well be another.
constexpr double kSureFigure = 0.6;
// Below this height of the ink, in pixels of the frame, a comma looks like a point and an 8 like
// a 6. The smallest text of a phone with two pixels a point is larger.
constexpr int kLeastFigureRows = 12;

std::string withoutSpaces(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c != ' ') result += c;
    }
    return result;
}

// Icons are read as short texts.
bool isShort(const std::string& text) {
    constexpr std::size_t kLongest = 3;
    return text.size() <= kLongest || graphemeCount(text) <= kLongest;
}

// Too much looks like a letter by itself, and nothing beside it says otherwise; a digit by itself
// must be plain. What else is short and no word is an icon read as signs.
bool mayBeIcon(const StripText& text) {
    constexpr double kPlainDigit = 0.75;
    const bool hasFigures = holdsFigures(text.text);
    if (graphemeCount(text.text) == 1) return !hasFigures || text.confidence < kPlainDigit;
    auto isSign = [](char c) { return static_cast<unsigned char>(c) < 0x80 && !std::isalpha(c); };
    return !hasFigures && isShort(text.text) && std::ranges::any_of(text.text, isSign);
}

bool needsSecondLook(const StripText& text) {
    // Surer ones are hardly ever wrong, less sure ones are textures.
    constexpr double kSure = 0.9, kHopeless = 0.25;
    if (holdsFigures(text.text)) return true;
    return !text.text.empty() && text.confidence >= kHopeless &&
           (text.confidence < kSure || isShort(text.text));
}

bool sayTheSame(const StripText& a, const StripText& b) {
    return withoutSpaces(a.text) == withoutSpaces(b.text);
}

}  // namespace

struct LineReader::Job {
    std::size_t line;
    const Ink* ink;
    PictureHash hash;
    Strip strip;  // of the first look
    std::array<StripText, kLooks.size()> looks;
    int looked = 0;
};

Result<std::vector<LineReading>> LineReader::read(const GrayFrame& frame,
                                                  std::span<const Ink> lines, TimePoint deadline) {
    std::vector<LineReading> readings(lines.size());
    std::vector<Job> jobs;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (clock_.now() >= deadline) break;
        const PictureHash hash = hashOf(frame, lines[i]);
        if (auto known = memory_.find(hash)) {
            readings[i] = {*std::move(known), true};
            continue;
        }
        Strip strip = makeStrip(frame, lines[i], kLooks[0].padding);
        if (auto known = memory_.findSimilar(lines[i].box, strip)) {
            readings[i] = {*std::move(known), true};
            continue;
        }
        jobs.push_back({i, &lines[i], hash, std::move(strip), {}, 0});
    }
    std::vector<Job*> pending;
    for (Job& job : jobs) pending.push_back(&job);
    TRY_VOID(look(frame, pending, 0, deadline));
    std::erase_if(pending,
                  [](const Job* job) { return !job->looked || !needsSecondLook(job->looks[0]); });
    TRY_VOID(look(frame, pending, 1, deadline));
    std::erase_if(pending, [](const Job* job) {
        return job->looked < 2 || sayTheSame(job->looks[0], job->looks[1]);
    });
    TRY_VOID(look(frame, pending, 2, deadline));

    for (Job& job : jobs) {
        if (job.looked == 0) continue;
        LineReading& reading = readings[job.line];
        reading = {verdict(job), true};
        // A line whose second look fell to the clock is worth reading again.
        const bool unverified = job.looked == 1 && holdsFigures(reading.text.text);
        if (unverified) continue;
        memory_.remember(job.hash, job.ink->box, std::move(job.strip), reading.text);
    }
    // The same ink may stand free elsewhere, so that this is no part of what is remembered.
    for (std::size_t i = 0; i < lines.size(); ++i) {
        StripText& text = readings[i].text;
        if (text.confidence > kDoubt && holdsAmount(text.text) && !standsFree(frame, lines[i]))
            text.confidence = kDoubt;
    }
    return readings;
}

StripText LineReader::verdict(const Job& job) {
    StripText text = job.looks[0];
    if (job.looked > 1) {
        text = sayTheSame(job.looks[0], job.looks[1]) ? agreed(job) : disputed(job);
    } else if (holdsFigures(text.text)) {
        text.confidence = std::min(text.confidence, kDoubt);
    }
    if (mayBeIcon(text)) text.confidence = std::min(text.confidence, kDoubt);
    return text;
}

// The text with its points as the ink has them, and doubted where they had not been.
StripText LineReader::checked(const Job& job, StripText text) {
    if (!holdsFigures(text.text)) return text;
    const bool isLarge = job.ink->box.height() >= kLeastFigureRows;
    PointCheck check = checkPoints(job.strip, text.text);
    if (isLarge) text.text = std::move(check.text);
    const bool isCutShort = check.lacksLetters && holdsAmount(text.text);
    if (!isLarge || check.marks != PointMarks::kSame || isCutShort ||
        text.leastFigure < kSureFigure) {
        text.confidence = std::min(text.confidence, kDoubt);
    }
    return text;
}

StripText LineReader::agreed(const Job& job) {
    const StripText &first = job.looks[0], &second = job.looks[1];
    // They may differ in spaces.
    StripText text = first.confidence >= second.confidence ? first : second;
    text.confidence = std::min(first.confidence, second.confidence);
    text.leastFigure = std::min(first.leastFigure, second.leastFigure);
    text = checked(job, std::move(text));
    if (mayMisspellAmount(text.text)) text.confidence = std::min(text.confidence, kDoubt);
    return text;
}

StripText LineReader::disputed(const Job& job) {
    const StripText &first = job.looks[0], &second = job.looks[1], &third = job.looks[2];
    const StripText* best = first.confidence >= second.confidence ? &first : &second;
    bool isDecided = false;
    if (job.looked == 3) {
        if (sayTheSame(third, first)) best = &first;
        if (sayTheSame(third, second)) best = &second;
        isDecided = sayTheSame(third, *best);
    }
    // What once looked like an amount is not told as something else.
    if (holdsFigures(first.text) && !holdsFigures(best->text)) best = &first;
    StripText text = *best;
    if (holdsFigures(text.text)) {
        // A look that has the points where the ink has them saw better than others.
        for (int look = 0; look < job.looked; ++look) {
            const StripText& other = job.looks[look];
            if (checkPoints(job.strip, text.text).marks == PointMarks::kSame) break;
            if (holdsFigures(other.text)) text = other;
        }
        text = checked(job, std::move(text));
        text.confidence = std::min(text.confidence, kDoubt);
    } else if (!isDecided && isShort(text.text)) {
        text.confidence = std::min(text.confidence, kDoubt);
    }
    return text;
}

Result<void> LineReader::look(const GrayFrame& frame, std::vector<Job*>& jobs, int which,
                              TimePoint deadline) {
    // Strips of about the same length go together: the network's steps then serve many at once.
    std::ranges::stable_sort(
        jobs, [](const Job* a, const Job* b) { return a->strip.columns > b->strip.columns; });
    std::vector<std::span<Job*>> batches;
    for (std::size_t first = 0; first < jobs.size();) {
        std::size_t end = first;
        for (int columns = 0; end < jobs.size() && (end == first || columns < kColumnsPerBatch);) {
            columns += jobs[end++]->strip.columns;
        }
        batches.push_back(std::span(jobs).subspan(first, end - first));
        first = end;
    }
    std::vector<Result<void>> results(batches.size());
    work_.run(static_cast<int>(batches.size()), [&](int index) {
        if (clock_.now() >= deadline) return;
        std::vector<Strip> strips;
        for (const Job* job : batches[index]) {
            if (which == 0) {
                strips.push_back(job->strip);
            } else {
                strips.push_back(makeStrip(frame, *job->ink, kLooks[which].padding));
                sharpen(strips.back(), kLooks[which].sharpening);
            }
        }
        auto texts = strips_.read(strips);
        if (!texts) {
            results[index] = std::unexpected(texts.error());
            return;
        }
        for (std::size_t i = 0; i < strips.size(); ++i) {
            batches[index][i]->looks[which] = std::move((*texts)[i]);
            batches[index][i]->looked = which + 1;
        }
    });
    for (const auto& result : results) TRY_VOID(result);
    return {};
}

}  // namespace tandrel
