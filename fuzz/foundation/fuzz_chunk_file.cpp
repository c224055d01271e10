// Arbitrary bytes as a chunk file, from a buffer and from a file: read in sequence and by identifier,
// and every chunk read written out again (measured first), which must read back the same.
#include "fuzz/fuzz_support.h"
#include "nimbit/utils/chunk_file.h"

#include <vector>

namespace {

struct chunk_copy {
    uint32_t id;
    std::vector<unsigned char> data;
    bool operator==(const chunk_copy&) const = default;
};

// The chunks in file order; a second reader then takes keyed reads of every type for the
// identifiers the settings use and the first ones found.
template <typename... Source> std::vector<chunk_copy> read_both_ways(const Source&... source) {
    std::vector<chunk_copy> chunks;
    nimbit::chunk_file file(source...);
    while (const uint32_t id = file.next_chunk())
        chunks.push_back({id, {file.chunk_data(), file.chunk_data() + file.chunk_size()}});
    nimbit::chunk_file keyed(source...);
    std::vector<uint32_t> ids = {1, 2, 3, 4, 5, 7, 8, 9, 10, 11, 12};
    for (size_t i = 0; i < chunks.size() && i < 8; ++i)
        ids.push_back(chunks[i].id);
    for (const uint32_t id : ids) {
        int number = 0;
        bool flag = false;
        long long wide = 0;
        std::string text;
        if (id % 4 == 0)
            while (keyed.chunk(id, text))
                check(text.size() < (1u << 31));
        else
            id % 4 == 1   ? keyed.chunk(id, number)
            : id % 4 == 2 ? keyed.chunk(id, flag)
                          : keyed.chunk(id, wide);
    }
    return chunks;
}

} // namespace

FUZZ_TARGET() {
    const std::vector<chunk_copy> chunks = read_both_ways(in.data, in.size);
    const nimbit::file_path path = scratch("settings");
    if (write_file(path, in.text()))
        check(read_both_ways(path, nimbit::chunk_file_access::read) == chunks);

    const auto write_all = [&](nimbit::chunk_file& file) {
        for (const chunk_copy& c : chunks)
            file.write_chunk(c.id, c.data.data(), static_cast<unsigned>(c.data.size()));
    };
    nimbit::chunk_file measure(nullptr, 0, nimbit::chunk_file_access::measure);
    write_all(measure);
    std::vector<unsigned char> buffer(measure.file_size());
    {
        nimbit::chunk_file writer(buffer.data(), buffer.size(), nimbit::chunk_file_access::write);
        write_all(writer);
    }
    check(read_both_ways(buffer.data(), buffer.size()) == chunks);
}
