#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace tandrel::bench {

// Milliseconds that `work` takes.
template <typename Work>
double timed(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

// The middle of `runs` such times, which a busy machine disturbs least.
template <typename Work>
double medianTime(int runs, Work work) {
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) times.push_back(timed(work));
    std::ranges::nth_element(times, times.begin() + runs / 2);
    return times[static_cast<std::size_t>(runs / 2)];
}

}  // namespace tandrel::bench
