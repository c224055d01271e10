#include "nimbit/filesystem/file_stats.h"
#include "nimbit/utils/chunk_file.h"
#include "nimbit/utils/mapped_cache.h"
#include "nimbit/utils/memory_map.h"

#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <map>
#include <optional>
#include <random>
#include <string>
#if !defined(_WIN32)
#include "file_size_limit.h"

#include <sys/wait.h>
#include <unistd.h>
#endif
#include <tuple>
#include <vector>

namespace {

using bytes = std::vector<unsigned char>;
using nimbit::cache_status;
using nimbit::chunk_file;
using nimbit::chunk_file_access;
using nimbit::mapped_cache;
using nimbit::memory_map;

uint64_t u64_at(const bytes& b, size_t at) {
    uint64_t v = 0;
    return std::memcpy(&v, b.data() + at, 8), v;
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
bool exists(const nimbit::file_path& path) {
    return nimbit::file_stats(path).exists;
}

class MappedCacheTest : public testing::Test {
protected:
    void open(mapped_cache& cache, bool read_only = false) const { cache.load(data_path, read_only); }

    temp_folder tmp;
    nimbit::file_path data_path = tmp / "effects_cache", header_path = tmp / "effects_cache.header";
};

TEST_F(MappedCacheTest, ANewCacheHasTheDocumentedFilesAndGrowsThemInStepsWhereItsFolderAllows) {
    // A missing folder leaves the cache unavailable; a read-only cache does not create its files either.
    for (const auto& [place, read_only] : {std::pair{tmp / "missing/c", false}, {data_path, true}}) {
        mapped_cache cache;
        cache.load(place, read_only);
        EXPECT_TRUE(!get(cache, "a") && !set(cache, "a", pattern(10, 1)) &&
                    cache.get_status() == cache_status::unavailable)
            << place.to_string();
    }
    EXPECT_FALSE(exists(tmp / "missing") || exists(header_path));

    mapped_cache cache;
    open(cache);
    EXPECT_TRUE(cache.get_status() == cache_status::loaded && !exists(header_path))
        << "nothing is opened before the first access";
    EXPECT_TRUE(!cache.get_data("anything") && cache.get_status() == cache_status::ready);
    // Header file size, magic, size limit and slot count; the data file's size.
    const auto layout = [&] {
        const bytes h = read_bytes(header_path);
        return std::tuple(h.size(), std::string(h.begin(), h.begin() + 8), u64_at(h, 8), u64_at(h, 16),
                          nimbit::file_stats(data_path).size);
    };
    const std::string magic("NBMPC\0\0\0", 8);
    EXPECT_EQ(layout(), std::tuple(10024u, magic, 524'288'000u, 50u, 5'242'880u));
    for (unsigned i = 0; i < 51; ++i)
        ASSERT_TRUE(set(cache, "value " + std::to_string(i), pattern(110'000, i)));
    EXPECT_EQ(layout(), std::tuple(12024u, magic, 524'288'000u, 60u, 15'728'640u));
    EXPECT_TRUE(get(cache, "value 0") == pattern(110'000, 0) &&
                get(cache, "value 50") == pattern(110'000, 50));
    EXPECT_FALSE(cache.set_data("", pattern(1, 1).data(), 1) || cache.set_data("x", nullptr, 1));

    // Clearing deletes the files; clearing with close also ends the cache.
    cache.clear(false);
    EXPECT_TRUE(cache.get_status() == cache_status::loaded && !exists(data_path) && !exists(header_path));
    EXPECT_FALSE(get(cache, "value 0"));
    ASSERT_TRUE(set(cache, "b", pattern(10, 2)));
    cache.clear(true);
    EXPECT_TRUE(cache.get_status() == cache_status::closed && !set(cache, "c", pattern(10, 3)) &&
                !exists(header_path));
}

TEST_F(MappedCacheTest, KeysKeepTheTailAndAStableHashOfTheWholeName) {
    EXPECT_EQ(mapped_cache::generate_key("abc"), "abc16654208175385433931");
    const std::string tail(128, 't'), one = "/one/" + tail, two = "/two/" + tail;
    EXPECT_EQ(mapped_cache::generate_key(one).substr(0, 128), tail);
    mapped_cache cache;
    open(cache);
    // Stored apart though their keys end alike; a zero byte must not cut the stored key.
    const std::string names[] = {one, two, std::string("x\0y", 3), std::string("x\0z", 3)};
    for (unsigned i = 0; i < 4; ++i)
        ASSERT_TRUE(set(cache, names[i], pattern(10, i)));
    cache.close();
    open(cache);
    for (unsigned i = 0; i < 4; ++i)
        EXPECT_EQ(get(cache, names[i]), pattern(10, i));
}

// A read-only cache reads but never writes. Headers that describe something outside the files are
// rebuilt empty when writable, and the cache stays off, the files untouched, when read-only.
TEST_F(MappedCacheTest, ReadOnlyCachesNeverWriteAndDamagedHeadersAreRebuiltOrLeaveThemOff) {
    {
        mapped_cache cache;
        open(cache);
        ASSERT_TRUE(set(cache, "a", pattern(100, 1)) && set(cache, "b", pattern(100, 2)));
    }
    const bytes good = read_bytes(header_path), data_before = read_bytes(data_path);
    {
        mapped_cache cache;
        open(cache, true);
        EXPECT_FALSE(set(cache, "c", pattern(10, 3)) || cache.remove_data("b"));
        cache.remove_oldest_entry();
        cache.defrag(3);
        EXPECT_TRUE(get(cache, "a") == pattern(100, 1) && get(cache, "b") == pattern(100, 2));
        cache.clear(false);
        EXPECT_TRUE(read_bytes(header_path) == good && read_bytes(data_path) == data_before);
    }
    // A slot count past what the file holds (the second wrapping round); b's slot past the data file or
    // wrapping round, under another index, overlapping a, empty.
    const size_t slot = 24 + 200;
    // clang-format off
    const std::pair<size_t, uint64_t> changes[] = {
        {16, 51}, {16, UINT64_MAX / 200 + 2}, {slot + 152, 5'242'880 - 50}, {slot + 160, UINT64_MAX - 50},
        {slot + 184, 4000}, {slot + 152, 50}, {slot + 160, 0}};
    // clang-format on
    std::vector<bytes> cases = {bytes(good.begin(), good.begin() + 5000),
                                bytes(good.begin(), good.begin() + 20)};
    for (const auto& [at, value] : changes)
        std::memcpy(cases.emplace_back(good).data() + at, &value, 8);
    cases.emplace_back(good)[0] = 'X';
    std::memset(cases.emplace_back(good).data() + slot, 'k', 152); // a key without its end
    for (const bytes& header : cases) {
        SCOPED_TRACE("case " + std::to_string(&header - cases.data()));
        write_bytes(header_path, header);
        mapped_cache read_only, cache;
        open(read_only, true);
        EXPECT_TRUE(!get(read_only, "a") && !set(read_only, "c", pattern(5, 5)) &&
                    read_only.get_status() == cache_status::invalid && read_bytes(header_path) == header);
        open(cache);
        EXPECT_TRUE(!get(cache, "a") && cache.get_status() == cache_status::ready &&
                    set(cache, "c", pattern(5, 5)));
        cache.close();
        write_bytes(header_path, good);
    }
    // Slots past the recorded count are never read: b's, the second, is not counted here.
    bytes fewer = good;
    fewer[16] = 1;
    write_bytes(header_path, fewer);
    mapped_cache cache;
    open(cache, true);
    EXPECT_TRUE(get(cache, "a") && !get(cache, "b"));
}

// Two objects on one set of files, as two hosts would have them: each sees what the other stored,
// removed or cleared, though the files grew or were made anew under its mappings.
TEST_F(MappedCacheTest, ObjectsSharingTheFilesSeeEachOthersChanges) {
    mapped_cache one, two, reader;
    open(one);
    open(two);
    open(reader, true);
    ASSERT_TRUE(set(one, "a", pattern(1000, 1)));
    EXPECT_EQ(get(two, "a"), pattern(1000, 1));
    // Past the first header and data file sizes.
    for (unsigned i = 0; i < 60; ++i)
        ASSERT_TRUE(set(one, "v" + std::to_string(i), pattern(100'000, i)));
    for (unsigned i = 0; i < 60; i += 59)
        EXPECT_TRUE(get(two, "v" + std::to_string(i)) == pattern(100'000, i) &&
                    get(reader, "v" + std::to_string(i)) == pattern(100'000, i));
    EXPECT_TRUE(two.remove_data("v0") && set(two, "a", pattern(10, 2)));
    EXPECT_TRUE(!get(one, "v0") && !get(reader, "v0") && get(one, "a") == pattern(10, 2));

    two.clear(false);
    EXPECT_TRUE(exists(tmp / "effects_cache.lock")) << "every process must go on locking the same file";
    EXPECT_FALSE(get(one, "v1")) << "a cleared file still mapped";
    ASSERT_TRUE(set(one, "b", pattern(10, 3)));
    EXPECT_TRUE(get(two, "b") == pattern(10, 3) && get(reader, "b") == pattern(10, 3) && !get(two, "v1") &&
                !get(reader, "v1"));
    EXPECT_TRUE(one.entry_count() == 1 && two.entry_count() == 1 && two.check_consistency());

#if !defined(_WIN32) // Windows refuses to cut a file while it is mapped
    // Cut short by something that takes no lock: the values past the new end are misses, not faults
    // on the pages still mapped there, and storing grows the file again.
    ASSERT_TRUE(set(one, "c", pattern(200'000, 4)) && get(two, "c") && get(reader, "c"));
    ASSERT_EQ(::truncate(data_path.c_str(), 100'000), 0);
    EXPECT_TRUE(!get(two, "c") && !get(one, "c") && !get(reader, "c") && get(two, "b") == pattern(10, 3));
    EXPECT_TRUE(set(two, "d", pattern(300'000, 5)) && get(one, "d") == pattern(300'000, 5));
#endif
}

// The suite's name makes it run before other tests start threads (the pixel export's pool): a forked
// child would inherit their locks.
using MappedCacheDeathTest = MappedCacheTest;

#if !defined(_WIN32) // no per-process file size limit on Windows, and no fork
// The file size limit stands in for a full disk: the cache refuses stores without losing what is
// there, and a chunk file stops cleanly after its last whole chunk.
TEST_F(MappedCacheTest, AFullDiskRefusesStoresWithoutLosingWhatIsThere) {
    file_size_limit limit(6 << 20);
    mapped_cache cache;
    open(cache);
    ASSERT_TRUE(set(cache, "small", pattern(1000, 1)));
    EXPECT_FALSE(set(cache, "needs growth", pattern(5'500'000, 2)));
    EXPECT_TRUE(get(cache, "small") == pattern(1000, 1) && cache.check_consistency());
    {
        chunk_file file(tmp / "limited", chunk_file_access::write);
        file.write_chunk(1, std::string(100, 'a'));
        file.write_chunk(2, std::string(7 << 20, 'b'));
        file.write_chunk(3, std::string(10, 'c'));
        EXPECT_FALSE(file.is_valid());
    }
    EXPECT_EQ(read_bytes(tmp / "limited").size(), 8u + 8u + 100u) << "chunk 1 only";
}

// A value that names its key and version in its first 8 bytes, the rest following from both: a
// value read under another key, or torn between two versions, does not pass well_formed.
bytes tagged(uint32_t key, uint32_t version, uint64_t length) {
    bytes b = pattern(length, key * 7919 + version);
    std::memcpy(b.data(), &key, 4);
    std::memcpy(b.data() + 4, &version, 4);
    return b;
}
bool well_formed(const bytes& b, uint32_t key) {
    uint32_t stored[2];
    return b.size() >= 8 && (std::memcpy(stored, b.data(), 8), stored[0] == key) &&
           b == tagged(key, stored[1], b.size());
}

// Two processes hammer one cache with stores (some growing the files), reads, removals and moves;
// one also clears it now and then. Neither may fault, and a read never yields another key's bytes.
TEST_F(MappedCacheDeathTest, TwoProcessesShareOneCacheWithoutFaultsOrForeignBytes) {
    constexpr uint32_t names = 80;
    const auto hammer = [&](unsigned seed, bool clears) {
        std::mt19937 random(seed);
        mapped_cache cache;
        cache.set_max_size(12 << 20);
        open(cache);
        int faults = 0;
        bytes out;
        const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(1200);
        for (uint32_t version = 0; std::chrono::steady_clock::now() < until; ++version) {
            const uint32_t key = random() % names, op = random() % 1000;
            const std::string name = std::to_string(key);
            if (op < 400) {
                const uint64_t length = 8 + random() % (op < 100 ? 1'000'000 : 6'000);
                set(cache, name, tagged(key, version, length));
            } else if (op < 800) {
                faults += cache.read_data(name, out) && !well_formed(out, key);
            } else if (op < 900) {
                // Only touched: once the lock is let go the other process may reuse these bytes.
                const nimbit::cache_value v = cache.get_data(name);
                faults += v && std::count(v.data, v.data + v.size, 0) > static_cast<long>(v.size);
            } else if (op < 970) {
                cache.remove_data(name);
            } else if (op < 990) {
                cache.defrag(random() % 4);
            } else if (clears && op < 993) {
                cache.clear(false);
            }
        }
        return faults + !cache.check_consistency();
    };
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0)
        ::_exit(std::min(hammer(1, true), 100));
    EXPECT_EQ(hammer(2, false), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << "the other process died of signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 0);

    // What is left on disk is whole: every value held is its key's, and the count agrees.
    mapped_cache after;
    open(after);
    uint64_t held = 0;
    bytes out;
    for (uint32_t key = 0; key < names; ++key)
        if (after.read_data(std::to_string(key), out)) {
            ++held;
            EXPECT_TRUE(well_formed(out, key)) << key;
        }
    EXPECT_TRUE(after.entry_count() == held && after.check_consistency());
}
#endif

// Creating, growing and cutting the mapped files is covered through the chunk file and the cache.
TEST(MemoryMap, RemapShowsAPageAlignedWindowAndNeverPassesTheEnd) {
    temp_folder tmp;
    const uint64_t page = memory_map::page_size();
    std::string text(3 * page, '.');
    text.replace(page + 100, 5, "hello");
    ASSERT_TRUE(write_text(tmp / "f", text));
    memory_map map(tmp / "f", nimbit::memory_map_access::read, 0, true, false);
    EXPECT_EQ(map.data(), nullptr) << "deferred";
    EXPECT_EQ(map.remap(page + 100, 5), page);
    ASSERT_TRUE(map.data() && map.view_size() == 105u);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(map.data()) + 100, 5), "hello");
    map.remap(2 * page, page + 1);
    EXPECT_FALSE(map.data() || map.is_open()) << "a failed remap ends the map";
    memory_map writer(tmp / "f", nimbit::memory_map_access::read_write, 0, true, false);
    EXPECT_TRUE(writer.reserve(0, 3 * page) && !writer.reserve(3 * page, 1)) << "blocks only inside the file";
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
        nimbit::remove_file(data_path);
        nimbit::remove_file(header_path);
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
                ASSERT_EQ(get(*cache, name), expected ? std::optional(*expected) : std::nullopt);
            } else if (op < 90) {
                EXPECT_EQ(cache->remove_data(name), model.entries.erase(name) == 1);
            } else if (op < 93) {
                cache->remove_oldest_entry(), model.evict_oldest();
            } else if (op < 96) {
                const uint32_t count = random() % 4;
                cache->defrag(count), model.defrag(count);
            } else {
                // The limit stored with the files wins over one set before loading them.
                cache = std::make_unique<mapped_cache>();
                cache->set_max_size(1);
                open(*cache);
                EXPECT_TRUE(!get(*cache, "never stored") && cache->get_max_size() == model.max_size);
            }
            ASSERT_TRUE(cache->check_consistency());
            ASSERT_EQ(cache->entry_count(), model.entries.size());
        }
    }
}

const bytes magic = {0x4E, 0x42, 0x43, 0x48, 0x46, 0x00, 0x00, 0x01};
const bytes legacy_magic = {0x4E, 0x42, 0x43, 0x46, 0x48, 0x00, 0x00, 0x01};

// Appends one raw chunk to a byte image; claimed_size may lie about the data that follows.
bytes& add(bytes& file, uint32_t id, const bytes& data, int64_t claimed_size = -1) {
    const auto size = static_cast<uint32_t>(claimed_size < 0 ? data.size() : claimed_size);
    for (uint32_t v : {id, size})
        for (int i = 0; i < 4; ++i)
            file.push_back(static_cast<unsigned char>(v >> (8 * i)));
    file.insert(file.end(), data.begin(), data.end());
    return file;
}

std::vector<uint32_t> ids_in(const bytes& image) {
    chunk_file file(image.data(), image.size());
    std::vector<uint32_t> ids;
    while (uint32_t id = file.next_chunk())
        ids.push_back(id);
    return ids;
}

using ChunkFileTest = MappedCacheTest;

struct record {
    int number = 0;
    bool flag = false;
    long long stamp = 0;
    std::string text;
};

// The one routine that lists the fields, for writing, measuring and reading alike.
bool transfer(chunk_file& file, record& r) {
    bool all = file.chunk(1, r.number);
    all &= file.chunk(2, r.flag);
    all &= file.chunk(3, r.stamp);
    return file.chunk(4, r.text) && all;
}

TEST_F(ChunkFileTest, WritesTheLittleEndianLayoutAndReadsItBackInAnyOrder) {
    record out{INT32_MIN, true, 0x0102030405060708LL, "abc"};
    write_bytes(tmp / "s", bytes(1000, 0x55)); // an older, longer file is cut
    {
        chunk_file file(tmp / "s", chunk_file_access::write);
        EXPECT_EQ(read_bytes(tmp / "s"), magic) << "the header exists from construction on";
        EXPECT_TRUE(transfer(file, out));
    }
    bytes expected = magic;
    add(add(add(add(expected, 1, {0, 0, 0, 0x80}), 2, {1}), 3, {8, 7, 6, 5, 4, 3, 2, 1}), 4, {'a', 'b', 'c'});
    EXPECT_EQ(read_bytes(tmp / "s"), expected);

    chunk_file file(tmp / "s", chunk_file_access::read);
    record in;
    EXPECT_TRUE(file.chunk(4, in.text) && file.chunk(3, in.stamp) && file.chunk(1, in.number) &&
                file.chunk(2, in.flag));
    EXPECT_EQ(std::tie(in.number, in.flag, in.stamp, in.text),
              std::tie(out.number, out.flag, out.stamp, out.text));
    EXPECT_FALSE(file.chunk(1, in.number)) << "each occurrence is read once";

    // Measured without a buffer, then written into one of exactly that size.
    chunk_file measure_buffer(nullptr, 0, chunk_file_access::measure);
    EXPECT_TRUE(transfer(measure_buffer, out));
    bytes buffer(measure_buffer.file_size());
    chunk_file writer(buffer.data(), buffer.size(), chunk_file_access::write);
    EXPECT_TRUE(transfer(writer, out));
    EXPECT_EQ(buffer, expected);
}

// Keyed reads take repeats in file order; one of the wrong size declines, leaves the value and moves
// on to the next occurrence.
TEST_F(ChunkFileTest, RepeatsComeBackInFileOrderWrongSizesDeclineAndIdentifierZeroEndsTheFile) {
    for (const bytes& start : {magic, legacy_magic}) {
        bytes image = start;
        const uint32_t wide = 0x04030201; // every byte of an identifier counts
        add(add(add(add(image, 9, {1, 2, 3, 4, 5, 6, 7, 8}), 9, {5, 0, 0, 0}), wide, {}), 9, {7, 0, 0, 0});
        add(add(add(image, 5, {0x7F}), 0, {0xAA}), 9, {8, 0, 0, 0});
        EXPECT_EQ(ids_in(image), (std::vector<uint32_t>{9, 9, wide, 9, 5}));

        // Each read of 9 as (taken, value after); the occurrence after identifier 0 is not indexed.
        chunk_file file(image.data(), image.size());
        std::vector<std::pair<bool, int>> reads;
        for (int i = 0, value = 42; i < 4; ++i)
            reads.push_back({file.chunk(9, value), value}); // braces: in order
        EXPECT_EQ(reads, (std::vector<std::pair<bool, int>>{{false, 42}, {true, 5}, {true, 7}, {false, 7}}));
        std::string empty = "default";
        bool flag = false; // any non-zero byte is true
        EXPECT_TRUE(file.chunk(wide, empty) && empty.empty() && file.chunk(5, flag) && flag);
    }
}

// Whatever the damage, reading keeps the whole chunks before it and leaves the values of the rest.
TEST_F(ChunkFileTest, EmptyUnknownShortCutAndMissingFilesKeepOnlyTheWholeChunks) {
    bytes good = magic;
    add(add(good, 1, {1, 0, 0, 0}), 2, {2, 0, 0, 0});
    bytes header_ends_file = good, data_too_long = good, size_overflows = good, header_cut = good;
    EXPECT_EQ(ids_in(add(header_ends_file, 3, {})), (std::vector<uint32_t>{1, 2, 3}));
    add(data_too_long, 3, {1, 2, 3}, 4);
    add(size_overflows, 3, {1, 2, 3}, 0xFFFFFFFFu);
    header_cut.insert(header_cut.end(), {3, 0, 0, 0, 4, 0});
    const std::vector<uint32_t> none, both = {1, 2};
    // clang-format off
    const std::tuple<bytes, bool, std::vector<uint32_t>> cases[] = {
        {magic, true, none}, {bytes(magic.begin(), magic.begin() + 7), false, none}, {{}, false, none},
        {{'N', 'B', 'C', 'H', 'F', 0, 0, 2}, false, none},
        {data_too_long, true, both}, {size_overflows, true, both}, {header_cut, true, both}};
    // clang-format on
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        const auto& [content, valid, ids] = cases[i];
        EXPECT_EQ(ids_in(content), ids);
        write_bytes(tmp / "f", content);
        chunk_file file(tmp / "f", chunk_file_access::read);
        EXPECT_EQ(file.is_valid(), valid);
        int value = 0;
        for (const uint32_t id : ids)
            EXPECT_TRUE(file.chunk(id, value) && value == int(id));
        std::string text = "keep";
        EXPECT_TRUE(!file.chunk(3, text) && text == "keep");
    }
    EXPECT_FALSE(chunk_file(tmp.path(), chunk_file_access::read).is_valid());
    EXPECT_FALSE(chunk_file(static_cast<const unsigned char*>(nullptr), 100).is_valid());

    chunk_file unwritable(tmp / "no/such/folder/s", chunk_file_access::write);
    EXPECT_FALSE(unwritable.is_valid());
    unwritable.write_chunk(1, 3);
    EXPECT_FALSE(exists(tmp / "no"));
}

TEST(ChunkFileDeathTest, MisuseStopsWithTheConditionText) {
    const auto overrun = [] {
        bytes small(20);
        chunk_file file(small.data(), small.size(), chunk_file_access::write);
        file.write_chunk(1, std::string("four")); // 8 + 8 + 4 = 20 fits
        file.write_chunk(2, std::string("more"));
    };
    EXPECT_DEATH(overrun(), "assertion failed: fileSize >= currentState\\.chunkOffset \\+ sizeof");
}

} // namespace
