#include "nimbit/utils/thread_pool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <tuple>
#include <vector>

using nimbit::thread_pool;
using nimbit::thread_worker_data;

namespace {

using ranges = std::vector<std::pair<uint32_t, uint32_t>>;

// Each worker runs its share once, even an empty one; the remainder goes to the last workers. A pool
// asked for no concurrency falls back to one worker.
TEST(ThreadPool, EveryWorkerRunsItsShareOnceWithTheRemainderAtTheEnd) {
    const std::vector<std::tuple<uint32_t, uint32_t, ranges>> cases = {
        {4, 10, {{0, 2}, {2, 4}, {4, 7}, {7, 10}}},
        {4, 2, {{0, 0}, {0, 0}, {0, 1}, {1, 2}}},
        {4, 0, {{0, 0}, {0, 0}, {0, 0}, {0, 0}}},
        {0, 7, {{0, 7}}}};
    for (const auto& [asked, count, expected] : cases) {
        thread_pool pool(asked);
        ASSERT_EQ(pool.get_worker_count(), expected.size());
        ranges seen(expected.size(), {99, 99});
        std::atomic<uint32_t> calls{0};
        pool.enqueue(count, [&](const thread_worker_data& d) {
            seen[d.thread_index] = {d.begin, d.end};
            ++calls;
        });
        EXPECT_EQ(calls.load(), expected.size());
        EXPECT_EQ(seen, expected) << count;
    }
    // Large counts neither overflow nor lose items.
    EXPECT_EQ(thread_pool::share(0xFFFFFFFFu, 3, 2).end, 0xFFFFFFFFu);
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

// Every job a worker runs is inside the installed scope, opened and closed on the worker's own
// thread; a guard opens it on any thread; without a scope nothing is called.
thread_local int open_scopes = 0;
std::atomic<int> scopes_ended{0};

TEST(ThreadPool, EachWorkersJobRunsInsideTheInstalledThreadScope) {
    nimbit::set_thread_scope({[]() -> void* { return ++open_scopes, &open_scopes; },
                              [](void* state) {
                                  EXPECT_EQ(state, &open_scopes) << "ended on the thread that began it";
                                  --open_scopes, ++scopes_ended;
                              }});
    thread_pool pool(3);
    std::atomic<int> inside{0};
    pool.enqueue(2, [&](const thread_worker_data&) { inside += open_scopes == 1; }); // one share is empty
    EXPECT_EQ(std::pair(inside.load(), scopes_ended.load()), std::pair(3, 3));
    {
        const nimbit::thread_scope_guard own;
        EXPECT_EQ(open_scopes, 1);
    }
    EXPECT_EQ(std::pair(open_scopes, scopes_ended.load()), std::pair(0, 4));

    nimbit::set_thread_scope({});
    inside = 0;
    pool.enqueue(3, [&](const thread_worker_data&) { inside += open_scopes; });
    EXPECT_EQ(std::pair(inside.load(), scopes_ended.load()), std::pair(0, 4));
}

} // namespace
