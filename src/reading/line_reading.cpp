#include "reading/line_reading.h"

#include <array>
#include <atomic>

#include "reading/ink_check.h"
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

std::string withoutSpaces(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c != ' ') result += c;
    }
    return result;
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
                  [](const Job* job) { return !job->looked || !holdsFigures(job->looks[0].text); });
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
    return readings;
}

StripText LineReader::verdict(const Job& job) {
    const StripText& first = job.looks[0];
    if (job.looked == 1) {
        StripText text = first;
        if (holdsFigures(text.text)) text.confidence = std::min(text.confidence, kDoubt);
        return text;
    }
    const StripText& second = job.looks[1];
    if (sayTheSame(first, second)) {
        // They may differ in spaces.
        StripText text = first.confidence >= second.confidence ? first : second;
        text.confidence = std::min(first.confidence, second.confidence);
        if (contradictsInk(job.strip, text.text) || mayMisspellSign(text.text)) {
            text.confidence = std::min(text.confidence, kDoubt);
        }
        return text;
    }
    const StripText* best = first.confidence >= second.confidence ? &first : &second;
    if (job.looked == 3) {
        if (sayTheSame(job.looks[2], first)) best = &first;
        if (sayTheSame(job.looks[2], second)) best = &second;
    }
    StripText text = *best;
    text.confidence = std::min(text.confidence, kDoubt);
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
