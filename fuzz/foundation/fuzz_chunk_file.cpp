// Arbitrary bytes as a chunk file: read sequentially and by identifiers, from a buffer and from a
// file, and every chunk read written out again, which must read back the same.
#include "nimbit/filesystem/file_path.h"
#include "nimbit/utils/chunk_file.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

struct chunk_copy {
    uint32_t id;
    std::vector<unsigned char> data;
};

const std::string& scratch_file() {
    static const std::string path = [] {
        // Memory-backed when possible: every run rewrites the files, and a disk would only slow it.
        const char* base = std::getenv("TMPDIR");
        if (!base || !*base)
            base = ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        std::string folder = std::string(base) + "/chunk_file_fuzz.XXXXXX";
        if (!::mkdtemp(folder.data()))
            std::abort();
        static std::string made;
        made = folder;
        std::atexit([] {
            for (const char* leaf : {"/settings"})
                ::unlink((made + leaf).c_str());
            ::rmdir(made.c_str());
        });
        return folder + "/settings";
    }();
    return path;
}

void check(bool condition) {
    if (!condition)
        __builtin_trap();
}

std::vector<chunk_copy> read_sequentially(nimbit::chunk_file& file) {
    std::vector<chunk_copy> chunks;
    while (const uint32_t id = file.next_chunk()) {
        const unsigned char* data = file.chunk_data();
        chunks.push_back({id, std::vector<unsigned char>(data, data + file.chunk_size())});
    }
    return chunks;
}

// Keyed reads of every type for the identifiers the settings use and the first ones found.
void read_by_keys(nimbit::chunk_file& file, const std::vector<chunk_copy>& chunks) {
    std::vector<uint32_t> ids = {1, 2, 3, 4, 5, 7, 8, 9, 10, 11, 12};
    for (size_t i = 0; i < chunks.size() && i < 8; ++i)
        ids.push_back(chunks[i].id);
    for (const uint32_t id : ids) {
        int number = 0;
        bool flag = false;
        long long wide = 0;
        std::string text;
        switch (id % 4) {
        case 0:
            while (file.chunk(id, text))
                check(text.size() < (1u << 31));
            break;
        case 1:
            file.chunk(id, number);
            break;
        case 2:
            file.chunk(id, flag);
            break;
        default:
            file.chunk(id, wide);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<chunk_copy> chunks;
    {
        nimbit::chunk_file file(data, size);
        file.is_valid();
        chunks = read_sequentially(file);
    }
    {
        nimbit::chunk_file file(data, size);
        read_by_keys(file, chunks);
    }

    // The same bytes through the file form.
    if (FILE* out = std::fopen(scratch_file().c_str(), "wb")) {
        std::fwrite(data, 1, size, out);
        std::fclose(out);
        nimbit::chunk_file file(nimbit::file_path(scratch_file()), nimbit::chunk_file_access::read);
        const auto again = read_sequentially(file);
        check(again.size() == chunks.size());
        nimbit::chunk_file keyed(nimbit::file_path(scratch_file()), nimbit::chunk_file_access::read);
        read_by_keys(keyed, chunks);
    }

    // What was read, written again: measured, into a buffer of that size, and read back unchanged.
    nimbit::chunk_file measure(nullptr, 0, nimbit::chunk_file_access::measure);
    for (const chunk_copy& c : chunks)
        measure.write_chunk(c.id, c.data.data(), static_cast<unsigned>(c.data.size()));
    std::vector<unsigned char> buffer(measure.file_size());
    {
        nimbit::chunk_file writer(buffer.data(), buffer.size(), nimbit::chunk_file_access::write);
        for (const chunk_copy& c : chunks)
            writer.write_chunk(c.id, c.data.data(), static_cast<unsigned>(c.data.size()));
    }
    nimbit::chunk_file reader(buffer.data(), buffer.size());
    const auto round_trip = read_sequentially(reader);
    check(round_trip.size() == chunks.size());
    for (size_t i = 0; i < chunks.size(); ++i)
        check(round_trip[i].id == chunks[i].id && round_trip[i].data == chunks[i].data);
    return 0;
}
