#pragma once

#include <algorithm>
#include <vector>

#include <time.h>

namespace tandrel::bench {

// Milliseconds of this thread's processor time that `work` takes. Everything compared here runs on
// one thread, and wall time on a busy machine measures the others.
template <typename Work>
double timed(Work work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    };
    const double start = now();
    work();
    return now() - start;
}

struct MedianTimes {
    double first;
    double second;
};

// The middle of `runs` times of each, taken in turns so that a busy moment hits both.
template <typename First, typename Second>
MedianTimes medianTimes(int runs, First first, Second second) {
    std::vector<double> firsts;
    std::vector<double> seconds;
    for (int i = 0; i < runs; ++i) {
        firsts.push_back(timed(first));
        seconds.push_back(timed(second));
    }
    const auto middle = [](std::vector<double>& times) {
        std::ranges::sort(times);
        return times[times.size() / 2];
    };
    return {middle(firsts), middle(seconds)};
}

}  // namespace tandrel::bench
