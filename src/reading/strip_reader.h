#pragma once

#include <span>
#include <string>
#include <vector>

#include "base/result.h"
#include "reading/strip.h"

namespace tandrel {

// What a strip says. An empty text means that nothing was recognised.
struct StripText {
    std::string text;
    double confidence = 0;  // 0 to 1
    // How sure the least sure of its digits, points and commas is; 1 if there is none.
    double leastFigure = 1;
    // What part of the strip's ink the text covers, as fractions of its width; the rest are icons.
    double begin = 0;
    double end = 1;
};

// Recognises strips; any number of threads at once.
class StripReader {
 public:
    virtual ~StripReader() = default;
    // One text for each strip, in their order. An error means that nothing can be read at all, for
    // instance because a file is missing; its message says what to do.
    virtual Result<std::vector<StripText>> read(std::span<const Strip> strips) = 0;
};

}  // namespace tandrel
