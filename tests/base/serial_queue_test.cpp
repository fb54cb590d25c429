#include "base/serial_queue.h"

#include <gtest/gtest.h>

TEST(SerialQueue, RunsInOrder) {
    tandrel::SerialQueue queue("test");
    std::string seen;
    for (char c = 'a'; c <= 'e'; ++c) queue.post([&seen, c] { seen += c; });
    EXPECT_EQ(queue.sync([&] { return seen; }), "abcde");
}
