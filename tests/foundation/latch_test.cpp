#include "nimbit/utils/latch.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

TEST(Latch, ReleasesWaiterAfterEveryCountDownAndIsReusable) {
    nimbit::latch latch;
    for (int round = 0; round < 3; ++round) {
        std::atomic<int> done{0};
        latch.reset(4);
        std::vector<std::thread> workers;
        for (int i = 0; i < 4; ++i)
            workers.emplace_back([&] {
                ++done;
                latch.count_down();
            });
        latch.wait();
        EXPECT_EQ(done.load(), 4);
        for (auto& t : workers)
            t.join();
    }
}

TEST(LatchDeathTest, MisuseStopsWithTheConditionText) {
    nimbit::latch latch;
    EXPECT_DEATH(latch.count_down(), "nimbit/utils/latch.cpp:[0-9]+: assertion failed: count > 0");
    latch.reset(1);
    EXPECT_DEATH(latch.reset(2), "assertion failed: count == 0");
}

} // namespace
