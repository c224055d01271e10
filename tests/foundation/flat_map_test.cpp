#include "nimbit/utils/flat_map.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <unordered_map>

namespace {

using nimbit::flat_map;
using nimbit::small_vector;

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
    map[&a].push_back(2);
    map[&a].push_back(3);
    map[&a].push_back(4); // past the inline capacity
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
    EXPECT_EQ(std::vector<int>(v.begin(), v.end()), expected);
    small_vector<int, 2> copy = v, moved = std::move(v);
    EXPECT_TRUE(v.empty() && std::vector<int>(moved.begin(), moved.end()) == expected);
    copy.erase(copy.begin() + 1);
    EXPECT_EQ(std::vector<int>(copy.begin(), copy.end()), (std::vector<int>{1, 4, 5, 7, 8}));

    small_vector<int, 2> small;
    small.push_back(9);
    small_vector<int, 2> small_moved = std::move(small);
    ASSERT_TRUE(small_moved.size() == 1 && small_moved[0] == 9);
    small = small_moved; // a moved-from vector takes values again
    EXPECT_TRUE(small.size() == 1 && small[0] == 9);
}

} // namespace
