#include "reading/letter_search.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <ranges>

namespace tandrel {

namespace {

constexpr std::size_t kBeam = 8;
constexpr int kMostCandidates = 8;
// A class less probable than this at a step is no candidate there.
constexpr float kLeastProbability = 0.004f;
// Classes this far below the best add less than a thousandth to the sum.
constexpr float kNegligible = 12;
constexpr float kWorstAgainstBest = 1e-5f;
constexpr int kNoNode = -1;

// Sequences form a tree: a node is a letter after the sequence of its parent.
struct Node {
    int parent;
    int letter;
    int step;
};

struct Hypothesis {
    int node;           // kNoNode is the empty sequence
    float afterGap;     // probability of the ways that end with "no letter"
    float afterLetter;  // of those that end with the last letter

    float total() const { return afterGap + afterLetter; }
};

struct Candidate {
    int letter;
    float probability;
};

struct Candidates {
    std::array<Candidate, kMostCandidates> list;
    int count = 0;
};

Candidates candidatesOf(std::span<const float> row, int classes) {
    float best = row[0];
    for (int c = 1; c < classes; ++c) best = std::max(best, row[c]);
    float sum = 0;
    std::array<Candidate, kMostCandidates> near;
    int count = 0;
    const float nearEnough = best + std::log(kLeastProbability);
    for (int c = 0; c < classes; ++c) {
        if (row[c] < best - kNegligible) continue;
        const float weight = std::exp(row[c] - best);
        sum += weight;
        if (row[c] < nearEnough) continue;
        if (count == kMostCandidates) {
            auto* weakest = std::ranges::min_element(near, {}, &Candidate::probability);
            if (weakest->probability < weight) *weakest = {c, weight};
        } else {
            near[count++] = {c, weight};
        }
    }
    Candidates result;
    for (int i = 0; i < count; ++i) {
        near[i].probability /= sum;
        if (near[i].probability >= kLeastProbability) result.list[result.count++] = near[i];
    }
    return result;
}

class Search {
 public:
    explicit Search(int noLetter) : noLetter_(noLetter) {}

    void advance(const Candidates& candidates, int step) {
        if (candidates.count == 1 && candidates.list[0].letter == noLetter_) {
            for (Hypothesis& h : beam_) h = {h.node, h.total(), 0};
            return;
        }
        next_.clear();
        for (const Hypothesis& h : beam_) {
            for (int i = 0; i < candidates.count; ++i) extend(h, candidates.list[i], step);
        }
        prune();
    }

    FoundLetters best() const {
        FoundLetters found;
        const Hypothesis& winner = beam_.front();
        for (int at = winner.node; at != kNoNode; at = nodes_[at].parent) {
            found.letters.push_back({nodes_[at].letter, nodes_[at].step, nodes_[at].step, 0});
        }
        std::ranges::reverse(found.letters);
        found.logProbability = scale_ + std::log(std::max(1e-30f, winner.total()));
        return found;
    }

 private:
    void extend(const Hypothesis& from, const Candidate& candidate, int step) {
        const float p = candidate.probability;
        if (candidate.letter == noLetter_) {
            entry(from.node).afterGap += p * from.total();
            return;
        }
        const bool repeats = from.node != kNoNode && nodes_[from.node].letter == candidate.letter;
        if (repeats) entry(from.node).afterLetter += p * from.afterLetter;
        const float extended = p * (repeats ? from.afterGap : from.total());
        if (extended > 0) entry(child(from.node, candidate.letter, step)).afterLetter += extended;
    }

    // Two hypotheses with the same letters must meet in the same node, else neither would get the
    // probability of both. A sequence that left the beam and comes back gets its old node too.
    int child(int parent, int letter, int step) {
        for (const Hypothesis& h : next_) {
            if (h.node != kNoNode && nodes_[h.node].parent == parent &&
                nodes_[h.node].letter == letter) {
                return h.node;
            }
        }
        for (const Hypothesis& h : beam_) {
            if (h.node != kNoNode && nodes_[h.node].parent == parent &&
                nodes_[h.node].letter == letter) {
                return h.node;
            }
        }
        nodes_.push_back({parent, letter, step});
        return static_cast<int>(nodes_.size()) - 1;
    }

    Hypothesis& entry(int node) {
        for (Hypothesis& h : next_) {
            if (h.node == node) return h;
        }
        return next_.emplace_back(Hypothesis{node, 0, 0});
    }

    void prune() {
        std::ranges::sort(next_, std::ranges::greater{}, &Hypothesis::total);
        if (next_.size() > kBeam) next_.resize(kBeam);
        const float best = next_.front().total();
        while (next_.back().total() < kWorstAgainstBest * best) next_.pop_back();
        constexpr float kTooSmall = 1e-10f;
        if (best < kTooSmall && best > 0) {
            scale_ += std::log(best);
            for (Hypothesis& h : next_) {
                h.afterGap /= best;
                h.afterLetter /= best;
            }
        }
        beam_.swap(next_);
    }

    const int noLetter_;
    double scale_ = 0;
    std::vector<Node> nodes_;
    std::vector<Hypothesis> beam_{{kNoNode, 1, 0}};
    std::vector<Hypothesis> next_;
};

}  // namespace

namespace {

float probabilityAt(const Candidates& step, int letter) {
    for (int c = 0; c < step.count; ++c) {
        if (step.list[c].letter == letter) return step.list[c].probability;
    }
    return 0;
}

// Moves each letter from where it first was a candidate to where it is most probable, which is at
// its ink; from the last letter back, since each one lies before the next.
void moveToPeaks(std::span<const Candidates> steps, std::vector<FoundLetter>& letters) {
    auto end = static_cast<int>(steps.size());
    for (FoundLetter& letter : std::views::reverse(letters)) {
        int peak = letter.step;
        for (int step = letter.step; step < end; ++step) {
            const float probability = probabilityAt(steps[step], letter.letter);
            if (probability <= letter.probability) continue;
            letter.probability = probability;
            peak = step;
        }
        letter.step = peak;
        end = std::max(peak, 1);
    }
}

}  // namespace

FoundLetters findLetters(const StripScores& scores, int classes, int noLetter) {
    Search search(noLetter);
    std::vector<Candidates> steps;
    for (int step = 0; step < scores.steps; ++step) {
        steps.push_back(candidatesOf(scores.at(step), classes));
        search.advance(steps.back(), step);
    }
    FoundLetters found = search.best();
    moveToPeaks(steps, found.letters);
    return found;
}

}  // namespace tandrel
