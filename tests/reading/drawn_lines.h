#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "platform/text_recognizer.h"

namespace tandrel {

// The texts that were read, sorted; an error as a line of its own.
inline std::vector<std::string> linesOf(const Result<ReadText>& read) {
    if (!read) return {"error: " + read.error().message};
    std::vector<std::string> lines;
    for (const TextRecord& record : read->records) lines.push_back(record.text);
    std::sort(lines.begin(), lines.end());
    return lines;
}

}  // namespace tandrel
