#pragma once

#include <vector>

#include "reading/network_runner.h"

namespace tandrel {

// One letter found along a strip.
struct FoundLetter {
    int letter = 0;          // its class
    int firstStep = 0;       // where it first was a candidate
    int step = 0;            // where it is most probable
    double probability = 0;  // of this letter there
};

struct FoundLetters {
    std::vector<FoundLetter> letters;
    double logProbability = 0;  // of exactly these letters, over all ways of spacing them
};

// The most probable sequence of letters: a prefix beam search over connectionist temporal
// classification. Unlike taking the best class of each step it adds up the ways to reach a
// sequence, which decides between "1.18" and "118".
FoundLetters findLetters(const StripScores& scores, int classes, int noLetter);

}  // namespace tandrel
