#include "memory_trend.h"

#include <cmath>
#include <fstream>

#include <unistd.h>

namespace tandrel {

MemoryTrend MemoryTrend::of(const std::vector<Sample>& samples) {
    const double n = static_cast<double>(samples.size());
    double x = 0;
    double y = 0;
    for (const Sample& sample : samples) {
        x += sample.minutes / n;
        y += sample.megabytes / n;
    }
    double xx = 0;
    double xy = 0;
    for (const Sample& sample : samples) {
        xx += (sample.minutes - x) * (sample.minutes - x);
        xy += (sample.minutes - x) * (sample.megabytes - y);
    }
    MemoryTrend trend{.slope = xy / xx, .mean = y};
    double residue = 0;
    for (const Sample& sample : samples) {
        const double off = sample.megabytes - y - trend.slope * (sample.minutes - x);
        residue += off * off;
    }
    trend.standardError = std::sqrt(residue / (n - 2) / xx);
    return trend;
}

bool MemoryTrend::isFlat() const {
    constexpr double minutesAnHour = 60;
    return slope <= 2 * standardError || slope * minutesAnHour < mean / 100;
}

double residentMegabytes() {
    std::ifstream file("/proc/self/statm");
    double total = 0;
    double resident = 0;
    file >> total >> resident;
    return resident * static_cast<double>(::sysconf(_SC_PAGESIZE)) / 1e6;
}

}  // namespace tandrel
