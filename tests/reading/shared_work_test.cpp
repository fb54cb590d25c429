#include "reading/shared_work.h"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(SharedWork, doesEachPieceOnceFromManyCallers) {
    SharedWork work("tandrel.test");
    std::vector<std::jthread> callers;
    std::atomic<int> wrong = 0;
    for (int caller = 0; caller < 4; ++caller) {
        callers.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                std::vector<std::atomic<int>> done(static_cast<std::size_t>(round));
                work.run(round, [&](int piece) { ++done[static_cast<std::size_t>(piece)]; });
                for (const auto& count : done) wrong += count != 1;
            }
        });
    }
    callers.clear();
    EXPECT_EQ(wrong, 0);
}

// Both threads are at work at the same time, or this would never end.
TEST(SharedWork, sharesItsPiecesBetweenTwoThreads) {
    SharedWork work("tandrel.test");
    std::atomic<int> arrived = 0;
    work.run(2, [&](int) {
        ++arrived;
        arrived.notify_all();
        for (int seen; (seen = arrived.load()) < 2;) arrived.wait(seen);
    });
    EXPECT_EQ(arrived, 2);
}

}  // namespace
}  // namespace tandrel
