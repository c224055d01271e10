#include "nimbit/utils/thread_pool.h"
#include "nimbit/utils/timer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <regex>
#include <thread>
#include <vector>

using nimbit::thread_pool;
using nimbit::thread_worker_data;

namespace {

std::vector<std::pair<uint32_t, uint32_t>> shares(uint32_t count, uint32_t workers) {
    std::vector<std::pair<uint32_t, uint32_t>> out;
    for (uint32_t i = 0; i < workers; ++i) {
        const thread_worker_data d = thread_pool::share(count, workers, i);
        EXPECT_EQ(d.thread_index, i);
        out.emplace_back(d.begin, d.end);
    }
    return out;
}

using ranges = std::vector<std::pair<uint32_t, uint32_t>>;

TEST(ThreadPool, ShareGivesTheRemainderToTheLastWorkers) {
    EXPECT_EQ(shares(10, 4), (ranges{{0, 2}, {2, 4}, {4, 7}, {7, 10}}));
    EXPECT_EQ(shares(2, 4), (ranges{{0, 0}, {0, 0}, {0, 1}, {1, 2}}));
    EXPECT_EQ(shares(0, 3), (ranges{{0, 0}, {0, 0}, {0, 0}}));
    EXPECT_EQ(shares(7, 1), (ranges{{0, 7}}));
    // Large counts neither overflow nor lose items.
    const auto big = shares(0xFFFFFFFFu, 3);
    EXPECT_EQ(big.back().second, 0xFFFFFFFFu);
    EXPECT_EQ(big[1].first, big[0].second);
}

// A pool asked for no concurrency falls back to one worker.
TEST(ThreadPool, EveryWorkerRunsItsShareOnceEvenWhenEmpty) {
    for (uint32_t asked : {4u, 0u}) {
        thread_pool pool(asked);
        const uint32_t workers = asked ? asked : 1;
        ASSERT_EQ(pool.get_worker_count(), workers);
        for (uint32_t count : {10u, 2u, 0u}) {
            std::vector<thread_worker_data> seen(workers, thread_worker_data{99, 99, 99});
            std::atomic<uint32_t> calls{0};
            pool.enqueue(count, [&](const thread_worker_data& d) {
                seen[d.thread_index] = d;
                ++calls;
            });
            EXPECT_EQ(calls.load(), workers);
            for (uint32_t i = 0; i < workers; ++i) {
                const thread_worker_data expected = thread_pool::share(count, workers, i);
                EXPECT_EQ(seen[i].begin, expected.begin) << count << " " << i;
                EXPECT_EQ(seen[i].end, expected.end) << count << " " << i;
            }
        }
    }
}

// Runs from two threads at once take turns, and every run covers every item exactly once.
TEST(ThreadPool, RunsFromTwoThreadsCoverEveryItemExactlyOnce) {
    thread_pool pool(3);
    std::vector<std::atomic<int>> hits(1000);
    auto caller = [&] {
        for (int run = 0; run < 100; ++run)
            pool.enqueue(1000, [&](const thread_worker_data& d) {
                for (uint32_t i = d.begin; i < d.end; ++i)
                    ++hits[i];
            });
    };
    std::thread a(caller), b(caller);
    a.join();
    b.join();
    for (auto& h : hits)
        ASSERT_EQ(h.load(), 200);
}

TEST(ThreadPool, NestedRunsFromAJobCompleteInsteadOfDeadlocking) {
    thread_pool pool(2);
    std::atomic<int> inner{0};
    pool.enqueue(2, [&](const thread_worker_data& outer) {
        if (outer.begin == outer.end)
            return;
        pool.enqueue(8, [&](const thread_worker_data& d) { inner += static_cast<int>(d.end - d.begin); });
    });
    EXPECT_EQ(inner.load(), 16);
}

TEST(Timer, ClocksAgreeAndStampsHaveTheirFormats) {
    const double micro = nimbit::timer::get_current_microseconds();
    const time_t seconds = nimbit::timer::get_current_time();
    EXPECT_LT(std::fabs(micro / 1e6 - static_cast<double>(seconds)), 2.0);
    EXPECT_TRUE(std::regex_match(nimbit::timer::get_formated_time(true),
                                 std::regex(R"(\d{4}-\d\d-\d\d_\d\d\.\d\d\.\d\d)")));
    EXPECT_TRUE(std::regex_match(nimbit::timer::get_formated_time(false),
                                 std::regex(R"(\d{4}\.\d\d\.\d\d \d\d:\d\d:\d\d)")));
}

} // namespace
