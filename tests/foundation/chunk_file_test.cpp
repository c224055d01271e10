#include "nimbit/filesystem/file_path.h"
#include "nimbit/utils/chunk_file.h"

#include "temp_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#if !defined(_WIN32)
#include <sys/resource.h>
#endif
#include <tuple>
#include <vector>

namespace {

using bytes = std::vector<unsigned char>;
using nimbit::chunk_file;
using nimbit::chunk_file_access;

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

struct ChunkFileTest : testing::Test {
    temp_folder tmp;
};

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
    {
        chunk_file file(tmp / "s", chunk_file_access::write);
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

        chunk_file file(image.data(), image.size());
        int value = 42;
        EXPECT_FALSE(file.chunk(9, value));
        EXPECT_EQ(value, 42);
        EXPECT_TRUE(file.chunk(9, value) && value == 5);
        EXPECT_TRUE(file.chunk(9, value) && value == 7);
        EXPECT_FALSE(file.chunk(9, value)) << "the occurrence after identifier 0 is not indexed";
        EXPECT_EQ(value, 7);
        std::string empty = "default";
        EXPECT_TRUE(file.chunk(wide, empty));
        EXPECT_EQ(empty, "");
        bool flag = false;
        EXPECT_TRUE(file.chunk(5, flag) && flag) << "any non-zero byte is true";
    }
}

TEST_F(ChunkFileTest, EmptyUnknownShortAndMissingFilesLeaveDefaults) {
    const std::vector<std::pair<bytes, bool>> cases = {{magic, true},
                                                       {bytes(magic.begin(), magic.begin() + 7), false},
                                                       {{}, false},
                                                       {{'N', 'B', 'C', 'H', 'F', 0, 0, 2}, false}};
    for (const auto& [content, valid] : cases) {
        write_bytes(tmp / "f", content);
        chunk_file file(tmp / "f", chunk_file_access::read);
        EXPECT_EQ(file.is_valid(), valid);
        EXPECT_EQ(file.next_chunk(), 0u);
        std::string text = "keep";
        EXPECT_FALSE(file.chunk(4, text));
        EXPECT_EQ(text, "keep");
    }
    EXPECT_FALSE(chunk_file(tmp.path(), chunk_file_access::read).is_valid());
    EXPECT_FALSE(chunk_file(static_cast<const unsigned char*>(nullptr), 100).is_valid());

    chunk_file unwritable(tmp / "no/such/folder/s", chunk_file_access::write);
    EXPECT_FALSE(unwritable.is_valid());
    unwritable.write_chunk(1, 3);
    EXPECT_FALSE(std::filesystem::exists((tmp / "no").to_string()));
}

TEST_F(ChunkFileTest, ChunksRunningPastTheEndCutTheFileThere) {
    bytes good = magic;
    add(add(good, 1, {1, 0, 0, 0}), 2, {2, 0, 0, 0});
    bytes header_ends_file = good;
    EXPECT_EQ(ids_in(add(header_ends_file, 3, {})), (std::vector<uint32_t>{1, 2, 3}));
    bytes data_too_long = good, size_overflows = good, header_cut = good;
    add(data_too_long, 3, {1, 2, 3}, 4);
    add(size_overflows, 3, {1, 2, 3}, 0xFFFFFFFFu);
    header_cut.insert(header_cut.end(), {3, 0, 0, 0, 4, 0});
    for (const bytes& image : {data_too_long, size_overflows, header_cut}) {
        EXPECT_EQ(ids_in(image), (std::vector<uint32_t>{1, 2}));
        chunk_file keyed(image.data(), image.size());
        int one = 0, two = 0;
        std::string three = "untouched";
        EXPECT_TRUE(keyed.chunk(2, two) && keyed.chunk(1, one) && !keyed.chunk(3, three));
        EXPECT_EQ(three, "untouched");
    }
}

// Forks: see MappedCacheDeathTest.
using ChunkFileDeathTest = ChunkFileTest;

#if !defined(_WIN32) // no per-process file size limit on Windows
TEST_F(ChunkFileDeathTest, WritersCutOldFilesAndStopCleanlyAtAFileSizeLimit) {
    write_bytes(tmp / "s", bytes(1000, 0x55));
    {
        chunk_file file(tmp / "s", chunk_file_access::write);
        EXPECT_EQ(read_bytes(tmp / "s"), magic) << "the header exists from construction on";
    }
    const std::string target = (tmp / "limited").to_string();
    // In a child process: the limit and the ignored signal stay out of the other tests.
    const auto write_past_limit = [&] {
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{4096, 4096};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        chunk_file file{nimbit::file_path(target), chunk_file_access::write};
        file.write_chunk(1, std::string(100, 'a'));
        file.write_chunk(2, std::string(8000, 'b'));
        file.write_chunk(3, std::string(10, 'c'));
        std::exit(file.is_valid() ? 1 : 0);
    };
    EXPECT_EXIT(write_past_limit(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(read_bytes(tmp / "limited").size(), 8u + 8u + 100u) << "chunk 1 only";
}
#endif

TEST_F(ChunkFileDeathTest, MisuseStopsWithTheConditionText) {
    const auto overrun = [] {
        bytes small(20);
        chunk_file file(small.data(), small.size(), chunk_file_access::write);
        file.write_chunk(1, std::string("four")); // 8 + 8 + 4 = 20 fits
        file.write_chunk(2, std::string("more"));
    };
    EXPECT_DEATH(overrun(), "assertion failed: fileSize >= currentState\\.chunkOffset \\+ sizeof");
}

} // namespace
