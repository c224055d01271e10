#include "nimbit/utils/flat_map.h"
#include "nimbit/utils/string_utils.h"
#include "nimbit/utils/thread_pool.h"
#include "nimbit/utils/utf8_case.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <random>
#include <thread>
#include <tuple>
#include <unordered_map>
#include <vector>

namespace {

using nimbit::flat_map;
using nimbit::small_vector;
using nimbit::thread_pool;
using nimbit::thread_worker_data;

// Random inserts and erases over a small key range (long probe runs, wrap-around at the end of the
// table, deletions in the middle of runs) must leave the map agreeing with a reference map.
TEST(FlatMap, AgreesWithAReferenceMapUnderRandomInsertsAndErases) {
    std::mt19937 rng(7);
    flat_map<uint32_t, int> map;
    std::unordered_map<uint32_t, int> reference;
    for (int step = 0; step < 20000; ++step) {
        const uint32_t key = rng() % 300;
        if (rng() % 3 < 2)
            map[key] = reference[key] = step;
        else
            EXPECT_EQ(map.erase(key), reference.erase(key) == 1);
        if (step % 997 == 0) {
            ASSERT_EQ(map.size(), reference.size());
            for (uint32_t k = 0; k < 300; ++k) {
                const int* found = map.find(k);
                ASSERT_EQ(found ? *found : -1, reference.count(k) ? reference[k] : -1) << k;
            }
        }
    }
}

TEST(FlatMap, NullPointerIsAnOrdinaryKeyAndClearKeepsTheMapUsable) {
    flat_map<void*, small_vector<uint32_t, 2>> map;
    int a = 0;
    map[nullptr].push_back(1);
    for (const uint32_t id : {2, 3, 4}) // the last past the inline capacity
        map[&a].push_back(id);
    ASSERT_TRUE(map.find(nullptr) && map.find(&a));
    EXPECT_TRUE(map.find(nullptr)->size() == 1 && map.find(&a)->size() == 3);
    size_t seen = 0;
    map.for_each([&](void*, const small_vector<uint32_t, 2>& ids) { seen += ids.size(); });
    EXPECT_EQ(seen, 4u);
    map.clear();
    EXPECT_TRUE(map.empty() && !map.find(&a) && !map.erase(nullptr));
    EXPECT_TRUE(map[&a].empty()); // a cleared entry does not come back with old values
}

TEST(SmallVector, GrowsPastItsInlineValuesAndKeepsThemThroughCopiesAndMoves) {
    small_vector<int, 2> v;
    for (int i = 0; i < 10; ++i)
        v.push_back(i);
    v.erase_if([](int x) { return x % 3 == 0; });
    const std::vector<int> expected{1, 2, 4, 5, 7, 8};
    small_vector<int, 2> copy = v, moved = std::move(v);
    EXPECT_TRUE(v.empty() && std::vector<int>(moved.begin(), moved.end()) == expected);
    copy.erase(copy.begin() + 1);
    EXPECT_EQ(std::vector<int>(copy.begin(), copy.end()), (std::vector<int>{1, 4, 5, 7, 8}));

    small_vector<int, 2> small;
    small.push_back(9);
    small_vector<int, 2> small_moved = std::move(small);
    small = small_moved; // a moved-from vector takes values again
    EXPECT_TRUE(small.size() == 1 && small[0] == 9);
}

// Lowering and trimming touch only ASCII letters and white space; UTF-8 bytes (>= 0x80) survive as they
// are. MacRoman text converts every high byte.
TEST(StringUtils, LowerAndTrimTouchOnlyAsciiAndMacRomanConvertsEveryHighByte) {
    EXPECT_EQ(nimbit::string_lower("Gaussian BLUR 2 @AZ[`{\xC3\x84"), "gaussian blur 2 @az[`{\xC3\x84");
    // Non-ASCII spaces are text.
    EXPECT_EQ((std::vector{nimbit::trim(" \t\r\n a b \v\f"), nimbit::trim("   "), nimbit::trim("\xC2\xA0x")}),
              (std::vector<std::string>{"a b", "", "\xC2\xA0x"}));

    const std::pair<const char*, const char*> samples[] = {
        {"caf\x8E", "caf\xC3\xA9"}, {"\x80", "\xC3\x84"} /* first */, {"\xFF", "\xCB\x87"} /* last */};
    for (const auto& [in, out] : samples)
        EXPECT_EQ(nimbit::macroman_to_utf8(in), out) << in;
    EXPECT_EQ(nimbit::macroman_to_utf8(std::string("a\0b", 3)), std::string("a\0b", 3));

    // Every high byte becomes exactly one well-formed UTF-8 character of two or three bytes.
    for (int b = 0x80; b <= 0xFF; ++b) {
        const std::string out = nimbit::macroman_to_utf8(std::string(1, static_cast<char>(b)));
        const auto lead = static_cast<unsigned char>(out[0]);
        ASSERT_EQ(lead >> 5 == 0x6 ? 2u : lead >> 4 == 0xE ? 3u : 0u, out.size()) << b;
        for (size_t i = 1; i < out.size(); ++i)
            EXPECT_EQ(static_cast<unsigned char>(out[i]) >> 6, 0x2) << b;
    }
}

// The last letter of a run, a far delta and a stray continuation byte as well.
TEST(Utf8Fold, CoversLatinGreekAndCyrillic) {
    struct Case {
        const char *text, *folded, *plain;
    };
    // clang-format off
    const Case cases[] = {
        {"\xC3\x9C" "berlagern \xC3\x86\xC3\x98", "\xC3\xBC" "berlagern \xC3\xA6\xC3\xB8", "uberlagern \xC3\xA6o"},
        {"STRA\xE1\xBA\x9E" "E \xC4\xB0\xC5\x81\xC7\x85", "stra\xC3\x9F" "e i\xC5\x82\xC7\x86", "strasse il\xC7\x86"},
        {"\xCE\xA3\xCE\x8C\xCE\xA6\xCE\x9F\xCE\xA3", "\xCF\x83\xCF\x8C\xCF\x86\xCE\xBF\xCF\x83", "\xCF\x83\xCE\xBF\xCF\x86\xCE\xBF\xCF\x83"},
        {"\xCF\x82 \xD0\x81\xD0\x96\xD0\x98\xD2\x90", "\xCF\x83 \xD1\x91\xD0\xB6\xD0\xB8\xD2\x91", "\xCF\x83 \xD0\xB5\xD0\xB6\xD0\xB8\xD2\x91"},
        {"U\xCC\x88" "ber \xFF\xC3", "u\xCC\x88" "ber \xEF\xBF\xBD\xEF\xBF\xBD", "uber \xEF\xBF\xBD\xEF\xBF\xBD"},
        {"\xC3\x96\xD0\xAF\xC6\xA6\x80", "\xC3\xB6\xD1\x8F\xCA\x80\xEF\xBF\xBD", "o\xD1\x8F\xCA\x80\xEF\xBF\xBD"},
        // U+01CA, U+01CD, U+01DE (runs of one and of every other code point), U+0370, U+0376, U+037F;
        // U+0800, the first character that needs three bytes
        {"\xC7\x8A\xC7\x8D\xC7\x9E\xCD\xB0\xCD\xB6\xCD\xBF\xE0\xA0\x80", "\xC7\x8C\xC7\x8E\xC7\x9F\xCD\xB1\xCD\xB7\xCF\xB3\xE0\xA0\x80", nullptr},
    };
    // clang-format on
    for (const Case& c : cases) {
        EXPECT_EQ(nimbit::utf8_fold(c.text), c.folded) << c.text;
        if (c.plain) {
            EXPECT_EQ(nimbit::utf8_fold(c.text, true), c.plain) << c.text;
        }
    }
}

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

// Runs from two threads at once take turns, and every run covers every item exactly once. A run started
// from inside a job completes instead of deadlocking, and a stopped pool runs on the caller.
TEST(ThreadPool, RunsFromTwoThreadsOrFromInsideAJobCoverEveryItemExactlyOnce) {
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

    std::atomic<int> inner{0};
    pool.enqueue(3, [&](const thread_worker_data& outer) {
        if (outer.begin == outer.end)
            return;
        pool.enqueue(8, [&](const thread_worker_data& d) { inner += static_cast<int>(d.end - d.begin); });
    });
    EXPECT_EQ(inner.load(), 24);

    // Stopped (as before the module unloads) while another thread runs: that thread's runs all end
    // whole, and later runs happen on the caller. Every run of all three threads counts each item once.
    std::thread c(caller);
    pool.stop_workers();
    c.join();
    for (auto& h : hits)
        ASSERT_EQ(h.load(), 300);
    const std::thread::id me = std::this_thread::get_id();
    std::atomic<int> items{0}, elsewhere{0};
    pool.enqueue(10, [&](const thread_worker_data& d) {
        items += static_cast<int>(d.end - d.begin);
        elsewhere += std::this_thread::get_id() != me;
    });
    EXPECT_EQ(std::pair(items.load(), elsewhere.load()), std::pair(10, 0));
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
