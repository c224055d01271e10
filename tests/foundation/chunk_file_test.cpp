#include "nimbit/filesystem/file_path.h"
#include "nimbit/utils/chunk_file.h"
#include "nimbit/utils/chunk_helper.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/resource.h>
#include <vector>

namespace {

using bytes = std::vector<unsigned char>;
using nimbit::chunk_file;
using nimbit::chunk_file_access;

const bytes current_magic = {0x4E, 0x42, 0x43, 0x48, 0x46, 0x00, 0x00, 0x01};
const bytes legacy_magic = {0x4E, 0x42, 0x43, 0x46, 0x48, 0x00, 0x00, 0x01};

// A fresh folder under $TMPDIR (or /tmp) per test, removed afterwards.
class ChunkFileTest : public testing::Test {
protected:
    void SetUp() override {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/chunk_file_test.XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(folder); }

    nimbit::file_path path(const std::string& name) const { return nimbit::file_path(folder + "/" + name); }

    static bytes read_all(const nimbit::file_path& p) {
        std::ifstream in(p.to_string(), std::ios::binary);
        return bytes(std::istreambuf_iterator<char>(in), {});
    }
    static void write_all(const nimbit::file_path& p, const bytes& content) {
        std::ofstream out(p.to_string(), std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(content.data()),
                  static_cast<std::streamsize>(content.size()));
    }

    std::string folder;
};

// Appends one raw chunk to a byte image.
void add_chunk(bytes& file, uint32_t id, const bytes& data, uint32_t claimed_size) {
    for (int i = 0; i < 4; ++i)
        file.push_back(static_cast<unsigned char>(id >> (8 * i)));
    for (int i = 0; i < 4; ++i)
        file.push_back(static_cast<unsigned char>(claimed_size >> (8 * i)));
    file.insert(file.end(), data.begin(), data.end());
}
void add_chunk(bytes& file, uint32_t id, const bytes& data) {
    add_chunk(file, id, data, static_cast<uint32_t>(data.size()));
}

struct record {
    int number = 0;
    bool flag = false;
    long long stamp = 0;
    std::string text;
};

// The one routine that lists the fields, used for writing, measuring and reading.
bool transfer(chunk_file& file, record& r) {
    bool all = file.chunk(1, r.number);
    all &= file.chunk(2, r.flag);
    all &= file.chunk(3, r.stamp);
    all &= file.chunk(4, r.text);
    return all;
}

TEST_F(ChunkFileTest, WritesTheLittleEndianLayoutAndReadsItBackInAnyOrder) {
    record out{-2, true, 0x0102030405060708LL, "abc"};
    {
        chunk_file file(path("settings"), chunk_file_access::write);
        EXPECT_TRUE(transfer(file, out));
    }
    bytes expected = current_magic;
    add_chunk(expected, 1, {0xFE, 0xFF, 0xFF, 0xFF});
    add_chunk(expected, 2, {1});
    add_chunk(expected, 3, {8, 7, 6, 5, 4, 3, 2, 1});
    add_chunk(expected, 4, {'a', 'b', 'c'});
    EXPECT_EQ(read_all(path("settings")), expected);

    // Keyed reads do not depend on the order of the file.
    chunk_file file(path("settings"), chunk_file_access::read);
    ASSERT_TRUE(file.is_valid());
    record in;
    EXPECT_TRUE(file.chunk(4, in.text));
    EXPECT_TRUE(file.chunk(3, in.stamp));
    EXPECT_TRUE(file.chunk(1, in.number));
    EXPECT_TRUE(file.chunk(2, in.flag));
    EXPECT_EQ(in.number, -2);
    EXPECT_TRUE(in.flag);
    EXPECT_EQ(in.stamp, 0x0102030405060708LL);
    EXPECT_EQ(in.text, "abc");
    EXPECT_FALSE(file.chunk(1, in.number)) << "each occurrence is read once";
}

TEST_F(ChunkFileTest, RepeatedIdentifiersComeBackInFileOrder) {
    bytes image = current_magic;
    add_chunk(image, 9, {5, 0, 0, 0});
    add_chunk(image, 2, {'x'});
    add_chunk(image, 9, {7, 0, 0, 0});
    add_chunk(image, 4, {});
    chunk_file file(image.data(), image.size());
    int value = -1;
    EXPECT_TRUE(file.chunk(9, value));
    EXPECT_EQ(value, 5);
    EXPECT_TRUE(file.chunk(9, value));
    EXPECT_EQ(value, 7);
    EXPECT_FALSE(file.chunk(9, value));
    EXPECT_EQ(value, 7);
    std::string empty = "default";
    EXPECT_TRUE(file.chunk(4, empty));
    EXPECT_EQ(empty, "") << "a chunk of size 0 is the empty string";
    std::string letter;
    EXPECT_TRUE(file.chunk(2, letter));
    EXPECT_EQ(letter, "x");
}

TEST_F(ChunkFileTest, SequentialReadingWalksEveryChunkIncludingLegacyFiles) {
    for (const bytes& magic : {current_magic, legacy_magic}) {
        bytes image = magic;
        add_chunk(image, 3, {1, 2});
        add_chunk(image, 3, {});
        add_chunk(image, 0x80000001u, {9, 9, 9});
        chunk_file file(image.data(), image.size());
        ASSERT_TRUE(file.is_valid());
        std::vector<std::pair<uint32_t, uint32_t>> seen;
        while (uint32_t id = file.next_chunk())
            seen.emplace_back(id, file.chunk_size());
        EXPECT_EQ(seen, (std::vector<std::pair<uint32_t, uint32_t>>{{3, 2}, {3, 0}, {0x80000001u, 3}}));
        EXPECT_EQ(file.next_chunk(), 0u) << "stays at the end";
        EXPECT_EQ(file.chunk_data(), nullptr);
    }
}

TEST_F(ChunkFileTest, EmptyUnknownShortAndMissingFilesLeaveDefaults) {
    struct {
        const char* what;
        bytes content;
        bool valid;
    } cases[] = {
        {"magic only", current_magic, true},
        {"seven bytes", bytes(current_magic.begin(), current_magic.begin() + 7), false},
        {"empty", {}, false},
        {"foreign magic", {'N', 'B', 'C', 'H', 'F', 0, 0, 2, 1, 0, 0, 0, 0, 0, 0, 0}, false},
    };
    for (const auto& c : cases) {
        write_all(path("f"), c.content);
        chunk_file file(path("f"), chunk_file_access::read);
        EXPECT_EQ(file.is_valid(), c.valid) << c.what;
        EXPECT_EQ(file.next_chunk(), 0u) << c.what;
        record r{11, true, 12, "keep"};
        EXPECT_FALSE(transfer(file, r)) << c.what;
        EXPECT_EQ(r.number, 11);
        EXPECT_TRUE(r.flag);
        EXPECT_EQ(r.stamp, 12);
        EXPECT_EQ(r.text, "keep");
    }
    chunk_file missing(path("nothing here"), chunk_file_access::read);
    EXPECT_FALSE(missing.is_valid());
    chunk_file folder_as_file(nimbit::file_path(folder), chunk_file_access::read);
    EXPECT_FALSE(folder_as_file.is_valid());
    chunk_file null_buffer(static_cast<const unsigned char*>(nullptr), 100);
    EXPECT_FALSE(null_buffer.is_valid());
}

TEST_F(ChunkFileTest, IdentifierZeroEndsSequentialReadingAndTheIndex) {
    bytes image = current_magic;
    add_chunk(image, 1, {1, 0, 0, 0});
    add_chunk(image, 0, {0xAA});
    add_chunk(image, 2, {2, 0, 0, 0});
    {
        chunk_file file(image.data(), image.size());
        EXPECT_EQ(file.next_chunk(), 1u);
        EXPECT_EQ(file.next_chunk(), 0u);
    }
    chunk_file file(image.data(), image.size());
    int a = 0, b = 0;
    EXPECT_TRUE(file.chunk(1, a));
    EXPECT_FALSE(file.chunk(2, b));
    EXPECT_EQ(b, 0);
}

TEST_F(ChunkFileTest, ChunksRunningPastTheEndCutTheFileThere) {
    bytes good = current_magic;
    add_chunk(good, 1, {1, 0, 0, 0});
    add_chunk(good, 2, {2, 0, 0, 0});

    bytes data_too_long = good;
    add_chunk(data_too_long, 3, {1, 2, 3}, 4); // one byte short
    bytes size_overflows = good;
    add_chunk(size_overflows, 3, {1, 2, 3}, 0xFFFFFFFFu);
    bytes header_cut = good;
    header_cut.insert(header_cut.end(), {3, 0, 0, 0, 4, 0}); // six bytes of an eight-byte header
    for (const bytes& image : {data_too_long, size_overflows, header_cut}) {
        chunk_file sequential(image.data(), image.size());
        std::vector<uint32_t> ids;
        while (uint32_t id = sequential.next_chunk())
            ids.push_back(id);
        EXPECT_EQ(ids, (std::vector<uint32_t>{1, 2}));

        chunk_file keyed(image.data(), image.size());
        int one = 0, two = 0;
        std::string three = "untouched";
        EXPECT_TRUE(keyed.chunk(2, two));
        EXPECT_TRUE(keyed.chunk(1, one));
        EXPECT_FALSE(keyed.chunk(3, three));
        EXPECT_EQ(one + two, 3);
        EXPECT_EQ(three, "untouched");
    }
}

TEST_F(ChunkFileTest, KeyedReadOfTheWrongSizeDeclinesAndMovesOn) {
    bytes image = current_magic;
    add_chunk(image, 1, {1, 2, 3, 4, 5, 6, 7, 8}); // eight bytes where an int is asked for
    add_chunk(image, 1, {6, 0, 0, 0});
    add_chunk(image, 2, {1, 0}); // a two-byte bool
    add_chunk(image, 3, {1, 2, 3, 4});
    chunk_file file(image.data(), image.size());
    int number = 42;
    EXPECT_FALSE(file.chunk(1, number));
    EXPECT_EQ(number, 42);
    EXPECT_TRUE(file.chunk(1, number));
    EXPECT_EQ(number, 6);
    bool flag = true;
    EXPECT_FALSE(file.chunk(2, flag));
    EXPECT_TRUE(flag);
    long long wide = -1;
    EXPECT_FALSE(file.chunk(3, wide));
    EXPECT_EQ(wide, -1);
}

TEST_F(ChunkFileTest, BoolBytesOtherThanZeroOrOneReadAsTrue) {
    bytes image = current_magic;
    add_chunk(image, 1, {0x7F});
    add_chunk(image, 2, {0});
    chunk_file file(image.data(), image.size());
    bool a = false, b = true;
    EXPECT_TRUE(file.chunk(1, a));
    EXPECT_TRUE(file.chunk(2, b));
    EXPECT_TRUE(a);
    EXPECT_FALSE(b);
}

TEST_F(ChunkFileTest, MeasureAddsUpWithoutTouchingAnything) {
    chunk_file file(path("never"), chunk_file_access::measure);
    int number = 1;
    bool flag = true;
    EXPECT_TRUE(file.chunk(1, number));
    EXPECT_TRUE(file.chunk(2, flag));
    EXPECT_TRUE(file.chunk(3, std::string("abc")));
    EXPECT_EQ(file.file_size(), 40u);
    EXPECT_EQ(file.next_chunk(), 0u);
    EXPECT_FALSE(std::filesystem::exists(path("never").to_string()));

    // A buffer sized by the measure pass takes exactly the same chunks.
    bytes buffer(file.file_size(), 0xCC);
    {
        chunk_file writer(buffer.data(), buffer.size(), chunk_file_access::write);
        writer.chunk(1, number);
        writer.chunk(2, flag);
        writer.chunk(3, std::string("abc"));
    }
    chunk_file reader(buffer.data(), buffer.size());
    record r;
    EXPECT_TRUE(reader.chunk(1, r.number));
    EXPECT_TRUE(reader.chunk(2, r.flag));
    EXPECT_TRUE(reader.chunk(3, r.text));
    EXPECT_EQ(r.text, "abc");
}

TEST_F(ChunkFileTest, WritingCutsAnOldFileBackAndAStoppedWriterLeavesAWellFormedFile) {
    write_all(path("s"), bytes(1000, 0x55));
    {
        chunk_file file(path("s"), chunk_file_access::write);
        EXPECT_EQ(read_all(path("s")), current_magic) << "the header exists from construction on";
        file.write_chunk(7, std::string("first"));
    }
    EXPECT_EQ(read_all(path("s")).size(), 8u + 8u + 5u);
    chunk_file file(path("s"), chunk_file_access::read);
    std::string first;
    EXPECT_TRUE(file.chunk(7, first));
    EXPECT_EQ(first, "first");
}

TEST_F(ChunkFileTest, UnwritableTargetsWriteNothingQuietly) {
    chunk_file missing_folder(path("no/such/folder/s"), chunk_file_access::write);
    EXPECT_FALSE(missing_folder.is_valid());
    int number = 3;
    EXPECT_TRUE(missing_folder.chunk(1, number)) << "a writer reports success; it has nothing to refuse";
    EXPECT_FALSE(std::filesystem::exists(path("no").to_string()));

    chunk_file null_buffer(nullptr, 64, chunk_file_access::write);
    null_buffer.write_chunk(1, number);
    EXPECT_FALSE(null_buffer.is_valid());
}

TEST_F(ChunkFileTest, AFileSizeLimitStopsTheWriterAtTheLastWholeChunk) {
    const std::string target = path("limited").to_string();
    // In a child process: the limit and the ignored signal must not reach the rest of the tests.
    const auto write_past_limit = [&] {
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{4096, 4096};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        chunk_file file{nimbit::file_path(target), chunk_file_access::write};
        file.write_chunk(1, std::string(100, 'a'));
        file.write_chunk(2, std::string(8000, 'b')); // passes the limit
        file.write_chunk(3, std::string(10, 'c'));   // the writer has stopped
        std::exit(file.is_valid() ? 1 : 0);
    };
    EXPECT_EXIT(write_past_limit(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(read_all(path("limited")).size(), 8u + 8u + 100u);
    chunk_file file(path("limited"), chunk_file_access::read);
    std::vector<uint32_t> ids;
    while (uint32_t id = file.next_chunk())
        ids.push_back(id);
    EXPECT_EQ(ids, std::vector<uint32_t>{1});
}

TEST_F(ChunkFileTest, WideValuesKeepEveryBit) {
    bytes buffer(200);
    int lowest = INT32_MIN, highest = INT32_MAX;
    long long big = INT64_MIN, small = -1;
    {
        chunk_file file(buffer.data(), buffer.size(), chunk_file_access::write);
        file.chunk(1, lowest);
        file.chunk(2, highest);
        file.chunk(3, big);
        file.chunk(4, small);
    }
    chunk_file file(buffer.data(), buffer.size());
    int a = 0, b = 0;
    long long c = 0, d = 0;
    EXPECT_TRUE(file.chunk(1, a) && file.chunk(2, b) && file.chunk(3, c) && file.chunk(4, d));
    EXPECT_EQ(a, INT32_MIN);
    EXPECT_EQ(b, INT32_MAX);
    EXPECT_EQ(c, INT64_MIN);
    EXPECT_EQ(d, -1);
}

using ChunkFileDeathTest = ChunkFileTest;

TEST_F(ChunkFileDeathTest, MisuseStopsWithTheConditionText) {
    bytes image = current_magic;
    add_chunk(image, 1, {1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_DEATH(
        {
            chunk_file file(image.data(), image.size());
            file.next_chunk();
            int value;
            nimbit::chunk_helper<int>::read(file, value);
        },
        "chunk_helper.h:[0-9]+: assertion failed: sizeof\\(T\\) == chunkFile\\.chunk_size\\(\\)");

    bytes junk = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    EXPECT_DEATH(
        {
            chunk_file file(junk.data(), junk.size());
            file.is_valid();
            file.chunk_size();
        },
        "chunk_file.cpp:[0-9]+: assertion failed: valid\n");
    EXPECT_DEATH(
        {
            chunk_file file(junk.data(), junk.size());
            file.next_chunk();
            std::string s;
            nimbit::chunk_helper<std::string>::read(file, s);
        },
        "assertion failed: valid");

    EXPECT_DEATH(
        {
            chunk_file file(path("m"), chunk_file_access::measure);
            file.write_chunk(0, std::string("x"));
        },
        "assertion failed: chunkId > 0");

    EXPECT_DEATH(
        {
            chunk_file file(image.data(), image.size());
            file.write_chunk(3, 4);
        },
        "assertion failed: get_file_access\\(\\) != chunk_file_access::read");

    EXPECT_DEATH(
        {
            bytes small(20);
            chunk_file file(small.data(), small.size(), chunk_file_access::write);
            file.write_chunk(1, std::string("four")); // 8 + 8 + 4 = 20 fits
            file.write_chunk(2, std::string("more"));
        },
        "assertion failed: fileSize >= currentState\\.chunkOffset \\+ sizeof\\(uint32_t\\) \\* 2 \\+ "
        "dataSize");
}

} // namespace
