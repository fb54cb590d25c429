#pragma once

#include <vector>

#include "platform/text_recognizer.h"
#include "text/known_frame.h"

namespace tandrel {

// How much of what frames show was read. Curly quotes and long dashes count as plain ones.
struct Score {
    int lines = 0;
    int exact = 0;
    int similar = 0;  // edit similarity 0.8 or more
    int amounts = 0;
    int exactAmounts = 0;
    int wrongAmounts = 0;  // read wrong with a confidence above 0.5
    int payLabels = 0;
    int exactPayLabels = 0;
    int junk = 0;    // records on no known line with a confidence of 0.5 or more
    int merged = 0;  // records that hold several known lines

    void add(const Score& other);
};

enum class Details { kNone, kPrint };

Score scoreFrame(const KnownFrame& frame, const std::vector<TextRecord>& records, Details details);

}  // namespace tandrel
