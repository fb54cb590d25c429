#pragma once

#include <vector>

namespace tandrel {

// A straight line through samples of resident memory over time.
struct MemoryTrend {
    struct Sample {
        double minutes = 0;
        double megabytes = 0;
    };
    double slope = 0;          // MB a minute
    double standardError = 0;  // of the slope
    double mean = 0;           // MB

    // At least three samples.
    static MemoryTrend of(const std::vector<Sample>& samples);
    // Whether memory cannot be told from standing still: the slope is within twice its standard
    // error, or its growth over an hour is less than a hundredth of what is used.
    bool isFlat() const;
};

double residentMegabytes();

}  // namespace tandrel
