#include "nimbit/filesystem/file_path.h"
#include "nimbit/utils/mapped_cache.h"

#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using bytes = std::vector<unsigned char>;
using nimbit::cache_status;
using nimbit::mapped_cache;

bytes read_all(const std::string& p) {
    return read_bytes(nimbit::file_path(p));
}
void write_all(const std::string& p, const bytes& content) {
    write_bytes(nimbit::file_path(p), content);
}
uint64_t u64_at(const bytes& b, size_t at) {
    uint64_t v = 0;
    std::memcpy(&v, b.data() + at, 8);
    return v;
}
void put_u64(bytes& b, size_t at, uint64_t v) {
    std::memcpy(b.data() + at, &v, 8);
}

// Every byte depends on the seed, so a mix-up or a torn copy shows.
bytes pattern(uint64_t length, unsigned seed) {
    bytes b(length);
    for (uint64_t i = 0; i < length; ++i)
        b[i] = static_cast<unsigned char>(seed * 31 + i * 7 + (i >> 8));
    return b;
}
std::optional<bytes> get(mapped_cache& cache, const std::string& name) {
    const nimbit::cache_value v = cache.get_data(name);
    return v ? std::optional<bytes>(bytes(v.data, v.data + v.size)) : std::nullopt;
}
bool set(mapped_cache& cache, const std::string& name, const bytes& value) {
    return cache.set_data(name, value.data(), value.size());
}

class MappedCacheTest : public testing::Test {
protected:
    void open(mapped_cache& cache, bool read_only = false) const {
        cache.load(nimbit::file_path(data_path), read_only);
    }
    // The data offset the header file on disk gives a name.
    uint64_t offset_of(const std::string& name) const {
        const bytes h = read_all(header_path);
        const std::string key = mapped_cache::generate_key(name);
        for (size_t at = 24; at + 200 <= h.size(); at += 200)
            if (h[at + 192] && key == reinterpret_cast<const char*>(h.data() + at))
                return u64_at(h, at + 152);
        return UINT64_MAX;
    }

    temp_folder tmp;
    std::string folder = tmp.path().to_string(), data_path = folder + "/effects_cache",
                header_path = data_path + ".header";
};

TEST_F(MappedCacheTest, ANewCacheHasTheDocumentedFilesAndGrowsThemInSteps) {
    mapped_cache cache;
    open(cache);
    EXPECT_EQ(cache.get_status(), cache_status::loaded);
    EXPECT_FALSE(std::filesystem::exists(header_path)) << "nothing is opened before the first access";
    EXPECT_FALSE(cache.get_data("anything"));
    EXPECT_EQ(cache.get_status(), cache_status::ready);
    bytes h = read_all(header_path);
    ASSERT_EQ(h.size(), 10024u);
    EXPECT_EQ(std::memcmp(h.data(), "NBMPC\0\0\0", 8), 0);
    EXPECT_EQ(u64_at(h, 8), 524'288'000u);
    EXPECT_EQ(u64_at(h, 16), 50u);
    EXPECT_EQ(std::filesystem::file_size(data_path), 5'242'880u);

    for (unsigned i = 0; i < 51; ++i)
        ASSERT_TRUE(set(cache, "value " + std::to_string(i), pattern(110'000, i)));
    h = read_all(header_path);
    EXPECT_EQ(h.size(), 12024u);
    EXPECT_EQ(u64_at(h, 16), 60u);
    EXPECT_EQ(std::filesystem::file_size(data_path), 15'728'640u);
    for (unsigned i = 0; i < 51; i += 10)
        EXPECT_EQ(get(cache, "value " + std::to_string(i)), pattern(110'000, i));
}

TEST_F(MappedCacheTest, ReplacingAndRemovingLeaveGapsThatFirstFitReuses) {
    mapped_cache cache;
    open(cache);
    ASSERT_TRUE(set(cache, "a", pattern(100, 1)) && set(cache, "b", pattern(100, 2)));
    ASSERT_TRUE(set(cache, "a", pattern(150, 3)));
    EXPECT_EQ(offset_of("a"), 200u) << "too large for its old range";
    ASSERT_TRUE(set(cache, "c", pattern(101, 4)));
    EXPECT_EQ(offset_of("c"), 350u);
    ASSERT_TRUE(set(cache, "d", pattern(60, 5)));
    EXPECT_EQ(offset_of("d"), 0u);
    ASSERT_TRUE(cache.remove_data("b"));
    EXPECT_FALSE(cache.remove_data("b"));
    EXPECT_EQ(offset_of("b"), UINT64_MAX) << "its slot is zeroed";
    ASSERT_TRUE(set(cache, "f", pattern(100, 7)));
    EXPECT_EQ(offset_of("f"), 60u) << "the freed range joins the gap before it";
    EXPECT_EQ(get(cache, "a"), pattern(150, 3));
    EXPECT_FALSE(cache.set_data("", pattern(1, 1).data(), 1) || cache.set_data("x", nullptr, 1));
    EXPECT_EQ(cache.entry_count(), 4u);
}

TEST_F(MappedCacheTest, EvictsTheLeastRecentlyUsedAndRefusesWhatCanNeverFit) {
    mapped_cache cache;
    cache.set_max_size(300);
    open(cache);
    for (char c : {'a', 'b', 'c'})
        ASSERT_TRUE(set(cache, std::string(1, c), pattern(100, c)));
    ASSERT_TRUE(get(cache, "a"));
    EXPECT_FALSE(set(cache, "big", pattern(301, 0))) << "refused before anything is evicted";
    ASSERT_TRUE(set(cache, "d", pattern(100, 'd')));
    EXPECT_FALSE(get(cache, "b"));
    ASSERT_TRUE(set(cache, "c", pattern(100, 'C'))); // a replacement counts as a use
    ASSERT_TRUE(set(cache, "e", pattern(150, 'e'))); // takes the room of a and then d
    EXPECT_FALSE(get(cache, "a") || get(cache, "d"));
    EXPECT_EQ(get(cache, "c"), pattern(100, 'C'));
    cache.close();
    cache.set_max_size(1);
    open(cache);
    EXPECT_TRUE(get(cache, "e"));
    EXPECT_EQ(cache.get_max_size(), 300u) << "the stored limit wins";
}

TEST_F(MappedCacheTest, KeysKeepTheTailAndAStableHashOfTheWholeName) {
    EXPECT_EQ(mapped_cache::generate_key("abc"), "abc16654208175385433931");
    const std::string tail(128, 't'), one = "/one/" + tail, two = "/two/" + tail;
    EXPECT_NE(mapped_cache::generate_key(one), mapped_cache::generate_key(two));
    EXPECT_EQ(mapped_cache::generate_key(one).substr(0, 128), tail);
    EXPECT_LE(mapped_cache::generate_key(std::string(5000, 'x')).size(), 148u);
    mapped_cache cache;
    open(cache);
    const std::string zero_a("x\0y", 3), zero_b("x\0z", 3); // a zero byte must not cut the stored key
    for (unsigned i = 0; const std::string& name : {one, two, zero_a, zero_b})
        ASSERT_TRUE(set(cache, name, pattern(10, i++)));
    cache.close();
    open(cache);
    for (unsigned i = 0; const std::string& name : {one, two, zero_a, zero_b})
        EXPECT_EQ(get(cache, name), pattern(10, i++));
}

TEST_F(MappedCacheTest, ClearDeletesTheFiles) {
    mapped_cache cache;
    open(cache);
    ASSERT_TRUE(set(cache, "a", pattern(10, 1)));
    cache.clear(false);
    EXPECT_EQ(cache.get_status(), cache_status::loaded);
    EXPECT_FALSE(std::filesystem::exists(data_path) || std::filesystem::exists(header_path));
    EXPECT_FALSE(get(cache, "a"));
    ASSERT_TRUE(set(cache, "b", pattern(10, 2)));
    cache.clear(true);
    EXPECT_EQ(cache.get_status(), cache_status::closed);
    EXPECT_FALSE(set(cache, "c", pattern(10, 3)));
    EXPECT_FALSE(std::filesystem::exists(header_path));
}

// Headers that describe something outside the files: rebuilt empty when writable, and the cache
// stays off, the files untouched, when read-only.
TEST_F(MappedCacheTest, DamagedHeadersAreRebuiltOrLeaveAReadOnlyCacheOff) {
    {
        mapped_cache cache;
        open(cache);
        ASSERT_TRUE(set(cache, "a", pattern(100, 1)) && set(cache, "b", pattern(100, 2)));
    }
    const bytes good = read_all(header_path);
    const size_t slot = 24 + 200;
    std::vector<bytes> cases;
    const auto with = [&](auto change) {
        cases.push_back(good);
        change(cases.back());
    };
    with([](bytes& h) { h[0] = 'X'; });
    with([](bytes& h) { put_u64(h, 16, 51); });
    with([](bytes& h) { put_u64(h, 16, UINT64_MAX / 200 + 2); });
    with([&](bytes& h) { put_u64(h, slot + 152, 5'242'880 - 50); });
    with([&](bytes& h) { put_u64(h, slot + 160, UINT64_MAX - 50); });
    with([&](bytes& h) { std::memset(h.data() + slot, 'k', 152); });
    with([&](bytes& h) { put_u64(h, slot + 184, 4000); });
    with([&](bytes& h) { put_u64(h, slot + 152, 50); }); // overlaps a
    with([&](bytes& h) { put_u64(h, slot + 160, 0); });
    cases.push_back(bytes(good.begin(), good.begin() + 5000));
    cases.push_back(bytes(good.begin(), good.begin() + 20));
    for (size_t i = 0; i < cases.size(); ++i) {
        write_all(header_path, cases[i]);
        {
            mapped_cache cache;
            open(cache, true);
            EXPECT_FALSE(get(cache, "a") || set(cache, "c", pattern(5, 5))) << "case " << i;
            EXPECT_EQ(cache.get_status(), cache_status::invalid) << "case " << i;
            EXPECT_EQ(read_all(header_path), cases[i]) << "case " << i;
        }
        mapped_cache cache;
        open(cache);
        EXPECT_FALSE(get(cache, "a")) << "case " << i;
        EXPECT_EQ(cache.get_status(), cache_status::ready) << "case " << i;
        EXPECT_EQ(read_all(header_path).size(), 10024u) << "case " << i;
        EXPECT_TRUE(set(cache, "c", pattern(5, 5))) << "case " << i;
        cache.close();
        write_all(header_path, good);
    }

    // A data file cut short while open: its values become misses, not faults.
    mapped_cache cache;
    open(cache);
    ASSERT_TRUE(get(cache, "b"));
    ::truncate(data_path.c_str(), 10);
    EXPECT_FALSE(get(cache, "b"));
}

TEST_F(MappedCacheTest, AReadOnlyCacheReadsButNeverWrites) {
    {
        mapped_cache cache;
        open(cache);
        ASSERT_TRUE(set(cache, "a", pattern(100, 1)) && set(cache, "b", pattern(100, 2)));
    }
    const bytes header_before = read_all(header_path), data_before = read_all(data_path);
    mapped_cache cache;
    open(cache, true);
    EXPECT_EQ(get(cache, "a"), pattern(100, 1));
    EXPECT_FALSE(set(cache, "c", pattern(10, 3)) || cache.remove_data("b"));
    cache.remove_oldest_entry();
    cache.defrag(3);
    EXPECT_EQ(get(cache, "b"), pattern(100, 2));
    cache.clear(false);
    EXPECT_EQ(read_all(header_path), header_before);
    EXPECT_EQ(read_all(data_path), data_before);
}

TEST_F(MappedCacheTest, MissingOrUnwritableFoldersLeaveTheCacheUnavailable) {
    write_all(folder + "/file", {1});
    std::vector<std::string> places = {folder + "/missing/c", folder + "/file/c", data_path};
    if (::geteuid() != 0) {
        ::mkdir((folder + "/locked").c_str(), 0500);
        places.push_back(folder + "/locked/c");
    } else {
        places.push_back("/proc/self/c"); // root may write anywhere but here
    }
    for (const std::string& place : places)
        for (bool read_only : {false, true}) {
            if (place == data_path && !read_only)
                continue; // a writable cache creates its files here
            mapped_cache cache;
            cache.load(nimbit::file_path(place), read_only);
            EXPECT_FALSE(get(cache, "a") || set(cache, "a", pattern(10, 1))) << place;
            EXPECT_EQ(cache.get_status(), cache_status::unavailable) << place;
        }
    EXPECT_FALSE(std::filesystem::exists(folder + "/missing") || std::filesystem::exists(header_path));
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
        int faults = !set(cache, "small", pattern(1000, 1));
        faults += set(cache, "needs growth", pattern(5'500'000, 2));
        faults += get(cache, "small") != pattern(1000, 1);
        std::exit(faults + !cache.check_consistency());
    };
    EXPECT_EXIT(fill(), testing::ExitedWithCode(0), "");
}

// A plain model of placement and eviction: first fit over values sorted by offset, least recently
// used out first. Random operations, reopening included, must keep cache and model in agreement.
struct cache_model {
    struct entry {
        bytes value;
        uint64_t offset, used;
    };
    std::map<std::string, entry> entries;
    uint64_t max_size, clock = 0;

    void evict_oldest() {
        auto oldest = std::min_element(entries.begin(), entries.end(),
                                       [](auto& a, auto& b) { return a.second.used < b.second.used; });
        if (oldest != entries.end())
            entries.erase(oldest);
    }
    std::vector<entry*> by_offset() {
        std::vector<entry*> out;
        for (auto& [name, e] : entries)
            out.push_back(&e);
        std::sort(out.begin(), out.end(), [](auto* a, auto* b) { return a->offset < b->offset; });
        return out;
    }
    uint64_t first_fit(uint64_t length) {
        uint64_t position = 0;
        for (entry* e : by_offset()) {
            if (e->offset - position >= length)
                return position;
            position = e->offset + e->value.size();
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
        return found == entries.end() ? nullptr : (found->second.used = ++clock, &found->second.value);
    }
    void defrag(uint32_t count) {
        uint64_t position = 0;
        for (entry* e : by_offset()) {
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
            SCOPED_TRACE("seed " + std::to_string(seed) + " step " + std::to_string(step));
            const std::string name = "/captures/" + std::to_string(random() % 70) + ".png";
            const unsigned op = random() % 100;
            if (op < 45) {
                const bytes value = pattern(1 + random() % (op < 3 ? 70'000 : 6'000), random());
                EXPECT_EQ(set(*cache, name, value), value.size() <= model.max_size);
                model.set(name, value);
            } else if (op < 80) {
                const bytes* expected = model.get(name);
                const auto found = get(*cache, name);
                ASSERT_EQ(found.has_value(), expected != nullptr);
                if (expected) {
                    ASSERT_TRUE(*found == *expected);
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
            ASSERT_EQ(cache->entry_count(), model.entries.size());
        }
        for (const auto& [name, e] : model.entries)
            ASSERT_EQ(offset_of(name), e.offset) << name;
    }
}

} // namespace
