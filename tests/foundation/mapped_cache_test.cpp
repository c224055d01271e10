#include "nimbit/filesystem/file_path.h"
#include "nimbit/utils/mapped_cache.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using bytes = std::vector<unsigned char>;
using nimbit::cache_status;
using nimbit::mapped_cache;

constexpr uint64_t new_header_size = 10024;
constexpr uint64_t new_data_size = 5'242'880;

bytes read_all(const std::string& p) {
    std::ifstream in(p, std::ios::binary | std::ios::ate);
    bytes content(in ? static_cast<size_t>(in.tellg()) : 0);
    in.seekg(0);
    in.read(reinterpret_cast<char*>(content.data()), static_cast<std::streamsize>(content.size()));
    return content;
}
void write_all(const std::string& p, const bytes& content) {
    std::ofstream out(p, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
}
uint64_t u64_at(const bytes& b, size_t at) {
    uint64_t v = 0;
    std::memcpy(&v, b.data() + at, 8);
    return v;
}
void put_u64(bytes& b, size_t at, uint64_t v) {
    std::memcpy(b.data() + at, &v, 8);
}

// A value whose every byte depends on its seed, so a mix-up or a torn copy shows.
bytes pattern(uint64_t length, unsigned seed) {
    bytes b(length);
    for (uint64_t i = 0; i < length; ++i)
        b[i] = static_cast<unsigned char>(seed * 31 + i * 7 + (i >> 8));
    return b;
}

std::optional<bytes> get(mapped_cache& cache, const std::string& name) {
    const nimbit::cache_value v = cache.get_data(name);
    if (!v)
        return std::nullopt;
    return bytes(v.data, v.data + v.size);
}
bool set(mapped_cache& cache, const std::string& name, const bytes& value) {
    return cache.set_data(name, value.data(), value.size());
}

struct slot_view {
    std::string key;
    uint64_t offset, size, index;
    uint32_t in_use;
};

class MappedCacheTest : public testing::Test {
protected:
    void SetUp() override {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/mapped_cache_test.XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder = pattern;
        data_path = folder + "/effects_cache";
        header_path = data_path + ".header";
    }
    void TearDown() override {
        ::chmod(folder.c_str(), 0700);
        std::filesystem::remove_all(folder);
    }

    void open(mapped_cache& cache, bool read_only = false) const {
        cache.load(nimbit::file_path(data_path), read_only);
    }

    // The used slots of the header file on disk, by slot.
    std::map<uint64_t, slot_view> slots_on_disk() const {
        const bytes h = read_all(header_path);
        std::map<uint64_t, slot_view> out;
        for (uint64_t i = 0; 24 + 200 * (i + 1) <= h.size(); ++i) {
            const unsigned char* s = h.data() + 24 + 200 * i;
            uint32_t in_use;
            std::memcpy(&in_use, s + 192, 4);
            if (in_use)
                out[i] = {std::string(reinterpret_cast<const char*>(s)), u64_at(h, 24 + 200 * i + 152),
                          u64_at(h, 24 + 200 * i + 160), u64_at(h, 24 + 200 * i + 184), in_use};
        }
        return out;
    }
    uint64_t offset_of(const std::string& name) const {
        const std::string key = mapped_cache::generate_key(name);
        for (const auto& [i, s] : slots_on_disk())
            if (s.key == key)
                return s.offset;
        ADD_FAILURE() << name << " is not in the header";
        return UINT64_MAX;
    }

    std::string folder, data_path, header_path;
};

TEST_F(MappedCacheTest, ANewCacheHasTheDocumentedFiles) {
    mapped_cache cache;
    EXPECT_EQ(cache.get_status(), cache_status::closed);
    open(cache);
    EXPECT_EQ(cache.get_status(), cache_status::loaded);
    EXPECT_FALSE(std::filesystem::exists(header_path)) << "nothing is opened before the first access";
    EXPECT_FALSE(cache.get_data("anything"));
    EXPECT_EQ(cache.get_status(), cache_status::ready);

    const bytes h = read_all(header_path);
    ASSERT_EQ(h.size(), new_header_size);
    EXPECT_EQ(std::memcmp(h.data(), "NBMPC\0\0\0", 8), 0);
    EXPECT_EQ(u64_at(h, 8), 524'288'000u);
    EXPECT_EQ(u64_at(h, 16), 50u);
    EXPECT_TRUE(std::all_of(h.begin() + 24, h.end(), [](unsigned char c) { return c == 0; }));
    EXPECT_EQ(std::filesystem::file_size(data_path), new_data_size);
}

TEST_F(MappedCacheTest, StoresReplacesAndPlacesFirstFit) {
    mapped_cache cache;
    open(cache);
    ASSERT_TRUE(set(cache, "a", pattern(100, 1)));
    ASSERT_TRUE(set(cache, "b", pattern(100, 2)));
    EXPECT_EQ(offset_of("a"), 0u);
    EXPECT_EQ(offset_of("b"), 100u);

    // Replacing with a larger value leaves the old range as a gap too small for it.
    ASSERT_TRUE(set(cache, "a", pattern(150, 3)));
    EXPECT_EQ(offset_of("a"), 200u);
    EXPECT_EQ(get(cache, "a"), pattern(150, 3));
    EXPECT_EQ(cache.entry_count(), 2u);

    // The gap takes the next value that fits; one that does not goes to the end.
    ASSERT_TRUE(set(cache, "c", pattern(101, 4)));
    EXPECT_EQ(offset_of("c"), 350u);
    ASSERT_TRUE(set(cache, "d", pattern(60, 5)));
    EXPECT_EQ(offset_of("d"), 0u);
    ASSERT_TRUE(set(cache, "e", pattern(40, 6)));
    EXPECT_EQ(offset_of("e"), 60u);

    for (const auto& [name, seed, size] :
         {std::tuple{"a", 3u, 150u}, {"b", 2u, 100u}, {"c", 4u, 101u}, {"d", 5u, 60u}, {"e", 6u, 40u}})
        EXPECT_EQ(get(cache, name), pattern(size, seed)) << name;
    EXPECT_TRUE(cache.check_consistency());
}

TEST_F(MappedCacheTest, RejectsEmptyInput) {
    mapped_cache cache;
    open(cache);
    const bytes v = pattern(10, 1);
    EXPECT_FALSE(cache.set_data("", v.data(), v.size()));
    EXPECT_FALSE(cache.set_data("x", nullptr, 10));
    EXPECT_FALSE(cache.set_data("x", v.data(), 0));
    EXPECT_FALSE(cache.get_data(""));
    EXPECT_FALSE(cache.remove_data("x"));
    EXPECT_EQ(cache.entry_count(), 0u);
}

TEST_F(MappedCacheTest, TheHeaderGrowsByTenSlots) {
    mapped_cache cache;
    open(cache);
    for (unsigned i = 0; i < 51; ++i)
        ASSERT_TRUE(set(cache, "value " + std::to_string(i), pattern(10, i)));
    const bytes h = read_all(header_path);
    EXPECT_EQ(h.size(), 12024u);
    EXPECT_EQ(u64_at(h, 16), 60u);
    const auto slots = slots_on_disk();
    ASSERT_EQ(slots.size(), 51u);
    for (const auto& [i, s] : slots)
        EXPECT_EQ(s.index, i);
    for (unsigned i = 0; i < 51; ++i)
        EXPECT_EQ(get(cache, "value " + std::to_string(i)), pattern(10, i));

    // A freed slot is used again before the header grows further.
    ASSERT_TRUE(cache.remove_data("value 7"));
    EXPECT_EQ(slots_on_disk().count(7), 0u);
    ASSERT_TRUE(set(cache, "another", pattern(5, 0)));
    EXPECT_EQ(slots_on_disk().at(7).key, mapped_cache::generate_key("another"));
}

TEST_F(MappedCacheTest, TheDataFileGrowsInTenMebibyteSteps) {
    mapped_cache cache;
    open(cache);
    ASSERT_TRUE(set(cache, "first", pattern(3'000'000, 1)));
    EXPECT_EQ(std::filesystem::file_size(data_path), new_data_size);
    ASSERT_TRUE(set(cache, "second", pattern(3'000'000, 2)));
    EXPECT_EQ(std::filesystem::file_size(data_path), 15'728'640u);
    ASSERT_TRUE(set(cache, "third", pattern(21'000'000, 3)));
    EXPECT_EQ(std::filesystem::file_size(data_path), 15'728'640u + 2 * 10'485'760u);
    EXPECT_EQ(get(cache, "second"), pattern(3'000'000, 2));
    EXPECT_EQ(get(cache, "third"), pattern(21'000'000, 3));
}

TEST_F(MappedCacheTest, EvictsTheLeastRecentlyUsedFirst) {
    mapped_cache cache;
    cache.set_max_size(300);
    open(cache);
    for (unsigned i = 0; i < 3; ++i)
        ASSERT_TRUE(set(cache, std::string(1, char('a' + i)), pattern(100, i)));
    ASSERT_TRUE(get(cache, "a")); // b is now the oldest
    ASSERT_TRUE(set(cache, "d", pattern(100, 3)));
    EXPECT_FALSE(get(cache, "b"));
    EXPECT_EQ(offset_of("d"), 100u) << "the evicted value's range is reused";
    ASSERT_TRUE(set(cache, "c", pattern(100, 9))); // a replacement counts as a use
    ASSERT_TRUE(set(cache, "e", pattern(150, 4))); // needs two neighbours' room: a, then d go
    EXPECT_FALSE(get(cache, "a"));
    EXPECT_FALSE(get(cache, "d"));
    EXPECT_EQ(get(cache, "c"), pattern(100, 9));
    EXPECT_EQ(get(cache, "e"), pattern(150, 4));
    EXPECT_EQ(cache.entry_count(), 2u);

    // remove_oldest_entry takes the same end of the order.
    cache.remove_oldest_entry();
    EXPECT_FALSE(get(cache, "c"));
    EXPECT_TRUE(get(cache, "e"));
}

TEST_F(MappedCacheTest, AValueLargerThanTheLimitIsRefusedBeforeAnythingIsEvicted) {
    mapped_cache cache;
    cache.set_max_size(1000);
    open(cache);
    ASSERT_TRUE(set(cache, "kept", pattern(600, 1)));
    EXPECT_FALSE(set(cache, "huge", pattern(1001, 2)));
    EXPECT_FALSE(set(cache, "kept", pattern(1001, 2))) << "a replacement too";
    EXPECT_EQ(get(cache, "kept"), pattern(600, 1));
    EXPECT_TRUE(set(cache, "exact", pattern(1000, 3)));
    EXPECT_FALSE(get(cache, "kept"));
}

TEST_F(MappedCacheTest, KeysKeepTheTailAndAStableHashOfTheWholeName) {
    EXPECT_EQ(mapped_cache::generate_key("abc"), "abc16654208175385433931");
    const std::string tail(128, 't');
    const std::string one = "/captures/one/" + tail, two = "/captures/two/" + tail;
    const std::string k1 = mapped_cache::generate_key(one), k2 = mapped_cache::generate_key(two);
    EXPECT_NE(k1, k2);
    EXPECT_EQ(k1.substr(0, 128), tail);
    EXPECT_LE(mapped_cache::generate_key(std::string(5000, 'x')).size(), 148u);

    mapped_cache cache;
    open(cache);
    ASSERT_TRUE(set(cache, one, pattern(10, 1)));
    ASSERT_TRUE(set(cache, two, pattern(10, 2)));
    EXPECT_EQ(get(cache, one), pattern(10, 1));
    EXPECT_EQ(get(cache, two), pattern(10, 2));
    // A zero byte in a name must not shorten the stored key.
    const std::string with_zero("x\0y", 3), other_zero("x\0z", 3);
    ASSERT_TRUE(set(cache, with_zero, pattern(4, 3)));
    ASSERT_TRUE(set(cache, other_zero, pattern(4, 4)));
    cache.close();
    open(cache);
    EXPECT_EQ(get(cache, with_zero), pattern(4, 3));
    EXPECT_EQ(get(cache, other_zero), pattern(4, 4));
}

TEST_F(MappedCacheTest, ValuesAndTheirOrderOfUseSurviveAReopen) {
    {
        mapped_cache cache;
        cache.set_max_size(400);
        open(cache);
        for (unsigned i = 0; i < 4; ++i)
            ASSERT_TRUE(set(cache, "v" + std::to_string(i), pattern(100, i)));
        ASSERT_TRUE(get(cache, "v0"));
        ASSERT_TRUE(get(cache, "v2"));
        cache.close();
        EXPECT_EQ(cache.get_status(), cache_status::closed);
    }
    mapped_cache cache;
    cache.set_max_size(1); // the stored limit wins
    open(cache);
    EXPECT_EQ(get(cache, "v3"), pattern(100, 3));
    EXPECT_EQ(cache.get_max_size(), 400u);
    // Oldest first now: v1, v0, v2, v3.
    ASSERT_TRUE(set(cache, "n1", pattern(100, 7)));
    EXPECT_FALSE(get(cache, "v1"));
    ASSERT_TRUE(set(cache, "n2", pattern(100, 8)));
    EXPECT_FALSE(get(cache, "v0"));
    EXPECT_TRUE(get(cache, "v2"));
}

TEST_F(MappedCacheTest, RemovingZeroesTheSlotAndLeavesAGap) {
    mapped_cache cache;
    open(cache);
    ASSERT_TRUE(set(cache, "a", pattern(50, 1)));
    ASSERT_TRUE(set(cache, "b", pattern(50, 2)));
    ASSERT_TRUE(cache.remove_data("a"));
    EXPECT_FALSE(cache.remove_data("a"));
    const bytes h = read_all(header_path);
    EXPECT_TRUE(std::all_of(h.begin() + 24, h.begin() + 224, [](unsigned char c) { return c == 0; }));
    EXPECT_EQ(offset_of("b"), 50u);
    ASSERT_TRUE(set(cache, "c", pattern(50, 3)));
    EXPECT_EQ(offset_of("c"), 0u);
    EXPECT_TRUE(cache.check_consistency());
}

TEST_F(MappedCacheTest, DefragMovesValuesDownOneStepPerCount) {
    mapped_cache cache;
    open(cache);
    for (unsigned i = 0; i < 5; ++i)
        ASSERT_TRUE(set(cache, "v" + std::to_string(i), pattern(1000 + i, i)));
    ASSERT_TRUE(cache.remove_data("v0"));
    ASSERT_TRUE(cache.remove_data("v2"));
    cache.defrag(0); // one move: v1 to 0
    EXPECT_EQ(offset_of("v1"), 0u);
    EXPECT_EQ(offset_of("v3"), 1000u + 1001 + 1002);
    cache.defrag(5);
    EXPECT_EQ(offset_of("v3"), 1001u);
    EXPECT_EQ(offset_of("v4"), 1001u + 1003);
    for (unsigned i : {1u, 3u, 4u})
        EXPECT_EQ(get(cache, "v" + std::to_string(i)), pattern(1000 + i, i));
    // Compacted space is found again by first fit.
    ASSERT_TRUE(set(cache, "tail", pattern(10, 9)));
    EXPECT_EQ(offset_of("tail"), 1001u + 1003 + 1004);
    cache.close();
    open(cache);
    EXPECT_EQ(get(cache, "v4"), pattern(1004, 4));
}

TEST_F(MappedCacheTest, ClearDeletesTheFilesAndReopensOrCloses) {
    mapped_cache cache;
    open(cache);
    ASSERT_TRUE(set(cache, "a", pattern(10, 1)));
    cache.clear(false);
    EXPECT_EQ(cache.get_status(), cache_status::loaded);
    EXPECT_FALSE(std::filesystem::exists(data_path));
    EXPECT_FALSE(std::filesystem::exists(header_path));
    EXPECT_FALSE(get(cache, "a"));
    EXPECT_EQ(cache.get_status(), cache_status::ready);
    ASSERT_TRUE(set(cache, "b", pattern(10, 2)));
    cache.clear(true);
    EXPECT_EQ(cache.get_status(), cache_status::closed);
    EXPECT_FALSE(set(cache, "c", pattern(10, 3)));
    EXPECT_FALSE(std::filesystem::exists(header_path));
    cache.clear(true); // a closed cache ignores it
    open(cache);
    EXPECT_FALSE(get(cache, "b"));
}

// Header images that describe something outside the files. Each is rebuilt empty when writable and
// leaves the cache off, untouched, when read-only.
TEST_F(MappedCacheTest, DamagedHeadersAreRebuiltOrLeaveAReadOnlyCacheOff) {
    {
        mapped_cache cache;
        open(cache);
        ASSERT_TRUE(set(cache, "a", pattern(100, 1)));
        ASSERT_TRUE(set(cache, "b", pattern(100, 2)));
    }
    const bytes good = read_all(header_path);
    const size_t slot1 = 24 + 200;
    struct damage {
        const char* what;
        bytes header;
    };
    std::vector<damage> cases;
    auto with = [&](const char* what, auto change) {
        bytes h = good;
        change(h);
        cases.push_back({what, h});
    };
    with("magic", [](bytes& h) { h[0] = 'X'; });
    with("slot count beyond the file", [](bytes& h) { put_u64(h, 16, 51); });
    with("slot count overflowing", [](bytes& h) { put_u64(h, 16, UINT64_MAX / 200 + 2); });
    with("value past the data file", [&](bytes& h) { put_u64(h, slot1 + 152, new_data_size - 50); });
    with("offset and size overflowing", [&](bytes& h) {
        put_u64(h, slot1 + 152, 16);
        put_u64(h, slot1 + 160, UINT64_MAX - 8);
    });
    with("key without terminator", [&](bytes& h) { std::memset(h.data() + slot1, 'k', 152); });
    with("slot index elsewhere", [&](bytes& h) { put_u64(h, slot1 + 184, 4000); });
    with("overlapping values", [&](bytes& h) { put_u64(h, slot1 + 152, 50); });
    with("empty value", [&](bytes& h) { put_u64(h, slot1 + 160, 0); });
    cases.push_back({"shorter than its slots", bytes(good.begin(), good.begin() + 5000)});
    cases.push_back({"shorter than the preamble", bytes(good.begin(), good.begin() + 20)});
    cases.push_back({"empty", {}});

    for (const damage& c : cases) {
        write_all(header_path, c.header);
        {
            mapped_cache cache;
            open(cache, true);
            EXPECT_FALSE(get(cache, "a")) << c.what;
            EXPECT_NE(cache.get_status(), cache_status::ready) << c.what;
            EXPECT_FALSE(set(cache, "c", pattern(5, 5))) << c.what;
            EXPECT_EQ(read_all(header_path), c.header) << c.what;
        }
        mapped_cache cache;
        open(cache);
        EXPECT_FALSE(get(cache, "a")) << c.what;
        EXPECT_EQ(cache.get_status(), cache_status::ready) << c.what;
        EXPECT_EQ(cache.entry_count(), 0u) << c.what;
        EXPECT_EQ(read_all(header_path).size(), new_header_size) << c.what;
        EXPECT_TRUE(set(cache, "c", pattern(5, 5))) << c.what;
        cache.close();
        write_all(header_path, good);
    }
}

TEST_F(MappedCacheTest, AShortenedDataFileDoesNotLetSlotsPointOutside) {
    {
        mapped_cache cache;
        open(cache);
        ASSERT_TRUE(set(cache, "a", pattern(100, 1)));
    }
    ::truncate(data_path.c_str(), 50);
    mapped_cache cache;
    open(cache);
    EXPECT_FALSE(get(cache, "a"));
    EXPECT_EQ(std::filesystem::file_size(data_path), new_data_size) << "rebuilt";

    // Cut while open: the value now lies outside the file, so reading it is a miss, not a fault.
    ASSERT_TRUE(set(cache, "b", pattern(100, 2)));
    ::truncate(data_path.c_str(), 10);
    EXPECT_FALSE(get(cache, "b"));
    EXPECT_TRUE(cache.check_consistency());
}

TEST_F(MappedCacheTest, AReadOnlyCacheReadsButNeverWrites) {
    {
        mapped_cache cache;
        open(cache);
        ASSERT_TRUE(set(cache, "a", pattern(100, 1)));
        ASSERT_TRUE(set(cache, "b", pattern(100, 2)));
    }
    const bytes header_before = read_all(header_path);
    const bytes data_before = read_all(data_path);
    mapped_cache cache;
    open(cache, true);
    EXPECT_EQ(get(cache, "a"), pattern(100, 1));
    EXPECT_FALSE(set(cache, "c", pattern(10, 3)));
    EXPECT_FALSE(cache.remove_data("b"));
    cache.remove_oldest_entry();
    cache.defrag(3);
    EXPECT_EQ(get(cache, "b"), pattern(100, 2));
    cache.clear(false);
    EXPECT_EQ(read_all(header_path), header_before);
    EXPECT_EQ(read_all(data_path), data_before);
}

TEST_F(MappedCacheTest, MissingOrUnwritableFoldersLeaveTheCacheUnavailable) {
    std::vector<std::string> places = {folder + "/missing/effects_cache", folder + "/file/effects_cache"};
    write_all(folder + "/file", {1});
    if (::geteuid() != 0) {
        ::mkdir((folder + "/locked").c_str(), 0500);
        places.push_back(folder + "/locked/effects_cache");
    } else {
        places.push_back("/proc/self/effects_cache"); // root writes anywhere but here
    }
    for (const std::string& place : places)
        for (bool read_only : {false, true}) {
            mapped_cache cache;
            cache.load(nimbit::file_path(place), read_only);
            EXPECT_FALSE(get(cache, "a")) << place;
            EXPECT_FALSE(set(cache, "a", pattern(10, 1))) << place;
            EXPECT_EQ(cache.get_status(), cache_status::unavailable) << place;
            cache.clear(false);
        }
    EXPECT_FALSE(std::filesystem::exists(folder + "/missing"));

    mapped_cache read_only_new;
    open(read_only_new, true);
    EXPECT_FALSE(read_only_new.get_data("a"));
    EXPECT_EQ(read_only_new.get_status(), cache_status::unavailable);
    EXPECT_FALSE(std::filesystem::exists(header_path));
}

TEST_F(MappedCacheTest, LoadOnlyNamesFilesWhenClosed) {
    mapped_cache cache;
    open(cache);
    ASSERT_TRUE(set(cache, "a", pattern(10, 1)));
    cache.load(nimbit::file_path(folder + "/elsewhere"), false);
    EXPECT_EQ(get(cache, "a"), pattern(10, 1));
    EXPECT_FALSE(std::filesystem::exists(folder + "/elsewhere.header"));
}

TEST_F(MappedCacheTest, AFullDiskRefusesStoresWithoutLosingWhatIsThere) {
    const std::string target = data_path;
    // In a child process: the file size limit stands in for a full disk.
    const auto fill = [&] {
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{6 << 20, 6 << 20};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        mapped_cache cache;
        cache.load(nimbit::file_path(target), false);
        int faults = 0;
        faults += !set(cache, "small", pattern(1000, 1));
        faults += set(cache, "needs growth", pattern(5'500'000, 2)); // the file would pass 6 MiB
        faults += get(cache, "small") != pattern(1000, 1);
        faults += !cache.check_consistency();
        std::exit(faults);
    };
    EXPECT_EXIT(fill(), testing::ExitedWithCode(0), "");
}

TEST_F(MappedCacheTest, OneObjectSharedByThreadsStaysConsistent) {
    mapped_cache cache;
    cache.set_max_size(64 * 1024);
    open(cache);
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            std::mt19937 random(t);
            for (int i = 0; i < 300; ++i) {
                const std::string name = "n" + std::to_string(random() % 20);
                const bytes value = pattern(1 + random() % 4000, t);
                if (random() % 3)
                    set(cache, name, value);
                else
                    cache.get_data(name); // the pointer is another thread's to invalidate: size only
            }
        });
    for (auto& t : threads)
        t.join();
    EXPECT_TRUE(cache.check_consistency());
    EXPECT_LE(cache.entry_count(), 20u);
}

// A plain model of placement and eviction: first fit over values sorted by offset, least recently
// used out first. Random operations must leave the cache and the model agreeing on every value.
struct cache_model {
    struct entry {
        bytes value;
        uint64_t offset;
        uint64_t used;
    };
    std::map<std::string, entry> entries;
    uint64_t max_size;
    uint64_t clock = 0;

    void evict_oldest() {
        auto oldest = std::min_element(entries.begin(), entries.end(),
                                       [](auto& a, auto& b) { return a.second.used < b.second.used; });
        if (oldest != entries.end())
            entries.erase(oldest);
    }
    uint64_t first_fit(uint64_t length) const {
        std::vector<std::pair<uint64_t, uint64_t>> ranges;
        for (const auto& [name, e] : entries)
            ranges.emplace_back(e.offset, e.value.size());
        std::sort(ranges.begin(), ranges.end());
        uint64_t position = 0;
        for (const auto& [offset, size] : ranges) {
            if (offset - position >= length)
                return position;
            position = offset + size;
        }
        return position;
    }
    void set(const std::string& name, const bytes& value) {
        if (value.size() > max_size)
            return;
        entries.erase(name);
        uint64_t offset;
        while ((offset = first_fit(value.size())) + value.size() > max_size)
            evict_oldest();
        entries[name] = {value, offset, ++clock};
    }
    const bytes* get(const std::string& name) {
        auto found = entries.find(name);
        if (found == entries.end())
            return nullptr;
        found->second.used = ++clock;
        return &found->second.value;
    }
    void defrag(uint32_t count) {
        std::vector<entry*> by_offset;
        for (auto& [name, e] : entries)
            by_offset.push_back(&e);
        std::sort(by_offset.begin(), by_offset.end(), [](auto* a, auto* b) { return a->offset < b->offset; });
        uint64_t position = 0;
        for (entry* e : by_offset) {
            if (e->offset != position) {
                e->offset = position;
                if (count-- == 0)
                    return;
            }
            position += e->value.size();
        }
    }
};

TEST_F(MappedCacheTest, RandomOperationsAgreeWithAPlainModel) {
    for (unsigned seed = 1; seed <= 4; ++seed) {
        std::filesystem::remove(data_path);
        std::filesystem::remove(header_path);
        std::mt19937 random(seed);
        cache_model model{{}, 60'000};
        auto cache = std::make_unique<mapped_cache>();
        cache->set_max_size(model.max_size);
        open(*cache);
        for (int step = 0; step < 1500; ++step) {
            const std::string name = "/captures/" + std::to_string(random() % 70) + ".png";
            const unsigned op = random() % 100;
            if (op < 45) {
                const bytes value = pattern(1 + random() % (op < 3 ? 70'000 : 6'000), random());
                const bool stored = set(*cache, name, value);
                EXPECT_EQ(stored, value.size() <= model.max_size);
                model.set(name, value);
            } else if (op < 80) {
                const bytes* expected = model.get(name);
                const auto found = get(*cache, name);
                ASSERT_EQ(found.has_value(), expected != nullptr) << "seed " << seed << " step " << step;
                if (expected) {
                    ASSERT_EQ(*found, *expected) << "seed " << seed << " step " << step;
                }
            } else if (op < 90) {
                EXPECT_EQ(cache->remove_data(name), model.entries.erase(name) == 1);
            } else if (op < 93) {
                cache->remove_oldest_entry();
                model.evict_oldest();
            } else if (op < 96) {
                const uint32_t count = random() % 4;
                cache->defrag(count);
                model.defrag(count);
            } else {
                cache = std::make_unique<mapped_cache>();
                open(*cache);
                EXPECT_FALSE(get(*cache, "never stored")); // opens the files
            }
            ASSERT_TRUE(cache->check_consistency());
            ASSERT_EQ(cache->entry_count(), model.entries.size()) << "seed " << seed << " step " << step;
        }
        for (const auto& [name, e] : model.entries)
            ASSERT_EQ(offset_of(name), e.offset) << name;
    }
}

} // namespace
