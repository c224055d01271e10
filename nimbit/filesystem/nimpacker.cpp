#include "nimbit/filesystem/nimpacker.h"

#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/filesystem/folder_iterator.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

namespace nimbit {

namespace {

constexpr size_t chunk = 16384;
constexpr size_t file_record_tail = 28; // size, compressed length, offset, two dates

struct file_closer {
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using unique_file = std::unique_ptr<std::FILE, file_closer>;

uint32_t read_u32(const unsigned char* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

uint64_t read_u64(const unsigned char* p) {
    return uint64_t(read_u32(p)) | uint64_t(read_u32(p + 4)) << 32;
}

void put_u32(std::string& out, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        out += static_cast<char>((v >> (8 * i)) & 0xFF);
}

void put_u64(std::string& out, uint64_t v) {
    put_u32(out, static_cast<uint32_t>(v));
    put_u32(out, static_cast<uint32_t>(v >> 32));
}

// A record's path must stay inside the destination: relative, without ".." components, and without
// NUL bytes (which would cut the path short when it reaches the system).
bool is_safe_relative_path(std::string_view name) {
    if (name.empty() || name.front() == '/' || name.find('\0') != std::string_view::npos)
        return false;
    size_t start = 0;
    while (start <= name.size()) {
        size_t slash = name.find('/', start);
        if (slash == std::string_view::npos)
            slash = name.size();
        if (name.substr(start, slash - start) == "..")
            return false;
        start = slash + 1;
    }
    return true;
}

// The pack's bytes, read at given positions. Either a block of memory or an open file.
class pack_source {
public:
    pack_source(const unsigned char* data, uint64_t size) : data(data), total(size) {}
    explicit pack_source(std::FILE* file) : file(file) {
        struct stat st;
        if (::fstat(::fileno(file), &st) == 0 && st.st_size > 0)
            total = static_cast<uint64_t>(st.st_size);
    }

    uint64_t size() const { return total; }
    // Copies n bytes at position pos; false when they are not all within the pack.
    bool read(uint64_t pos, void* out, size_t n) const {
        if (pos > total || n > total - pos)
            return false;
        if (data) {
            std::memcpy(out, data + pos, n);
            return true;
        }
        return ::fseeko(file, static_cast<off_t>(pos), SEEK_SET) == 0 && std::fread(out, 1, n, file) == n;
    }

private:
    const unsigned char* data = nullptr;
    std::FILE* file = nullptr;
    uint64_t total = 0;
};

// Inflates one file's stream of length bytes at offset into out.
unsigned inflate_to(const pack_source& pack, uint64_t offset, uint32_t length, std::FILE* out) {
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK)
        return nimpacker::inflater_failed;
    std::unique_ptr<z_stream, int (*)(z_stream*)> guard(&stream, inflateEnd);

    unsigned char in[chunk];
    unsigned char window[chunk];
    uint64_t pos = offset;
    uint64_t left = length;
    int result = Z_OK;
    while (result != Z_STREAM_END) {
        if (left == 0)
            return nimpacker::stream_truncated;
        const size_t n = left < chunk ? static_cast<size_t>(left) : chunk;
        if (!pack.read(pos, in, n))
            return nimpacker::stream_truncated;
        stream.next_in = in;
        stream.avail_in = static_cast<uInt>(n);
        do {
            stream.next_out = window;
            stream.avail_out = chunk;
            result = inflate(&stream, Z_NO_FLUSH);
            if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR)
                return nimpacker::corrupt_stream;
            const size_t produced = chunk - stream.avail_out;
            if (produced > 0 && std::fwrite(window, 1, produced, out) != produced)
                return nimpacker::write_failed;
        } while (stream.avail_out == 0 && result != Z_STREAM_END);
        const size_t used = n - stream.avail_in;
        pos += used;
        left -= used;
        // The inflater takes all it is given unless the stream ended inside this chunk.
        if (used == 0 && result != Z_STREAM_END)
            return nimpacker::corrupt_stream;
    }
    return nimpacker::success;
}

unsigned unpack(const pack_source& pack, const file_path& destination) {
    unsigned char word[8];
    if (!pack.read(0, word, 4) || read_u32(word) != nimpacker::magic)
        return nimpacker::bad_magic;
    uint64_t pos = 4;
    if (!pack.read(pos, word, 4))
        return nimpacker::folder_table_truncated;
    const uint32_t folder_count = read_u32(word);
    pos += 4;

    std::string name;
    for (uint32_t i = 0; i < folder_count; ++i) {
        if (!pack.read(pos, word, 4))
            return nimpacker::folder_table_truncated;
        const uint32_t length = read_u32(word);
        pos += 4;
        if (length > pack.size() - pos)
            return nimpacker::folder_table_truncated;
        name.resize(length);
        if (!pack.read(pos, name.data(), length))
            return nimpacker::folder_table_truncated;
        pos += length;
        if (!is_safe_relative_path(name) || !make_dir(destination.append(file_path(name))))
            return nimpacker::cannot_create_folder;
    }

    if (!pack.read(pos, word, 4))
        return nimpacker::file_table_truncated;
    const uint32_t file_count = read_u32(word);
    pos += 4;

    unsigned char tail[file_record_tail];
    for (uint32_t i = 0; i < file_count; ++i) {
        if (!pack.read(pos, word, 4))
            return nimpacker::file_table_truncated;
        const uint32_t length = read_u32(word);
        pos += 4;
        if (length > pack.size() - pos)
            return nimpacker::file_table_truncated;
        name.resize(length);
        if (!pack.read(pos, name.data(), length) || !pack.read(pos + length, tail, sizeof tail))
            return nimpacker::file_table_truncated;
        pos += length + sizeof tail;

        const uint32_t compressed = read_u32(tail + 4);
        const uint32_t offset = read_u32(tail + 8);
        const auto created = static_cast<int64_t>(read_u64(tail + 12));
        const auto modified = static_cast<int64_t>(read_u64(tail + 20));

        if (!is_safe_relative_path(name))
            return nimpacker::cannot_create_file;
        const file_path target = destination.append(file_path(name));
        unique_file out(std::fopen(target.c_str(), "wb"));
        if (!out)
            return nimpacker::cannot_create_file;
        // An empty file has no stream; it still gets its dates.
        if (compressed != 0)
            if (const unsigned code = inflate_to(pack, offset, compressed, out.get()); code != nimpacker::success)
                return code;
        if (std::fclose(out.release()) != 0)
            return nimpacker::write_failed;
        set_file_dates(target, created, modified);
    }
    return nimpacker::success;
}

// What the packer found below the source folder, as paths relative to it.
struct pack_listing {
    std::vector<std::string> folders;
    std::vector<std::string> files;
};

pack_listing list_tree(const file_path& source) {
    pack_listing listing;
    const size_t prefix = source.append(file_path("x")).to_string().size() - 1;
    for (const folder_entry& entry : folder_enumerator{source, true}) {
        const std::string& text = entry.path.to_string();
        const std::string leaf = entry.path.leaf(true);
        if (leaf == "." || leaf == ".." || text.size() <= prefix)
            continue;
        std::string relative = text.substr(prefix);
        if (entry.is_folder)
            listing.folders.push_back(std::move(relative));
        else if (file_stats(entry.path).type == 0)
            listing.files.push_back(std::move(relative));
    }
    return listing;
}

// Deflates the file at path onto the end of out; sets the compressed length.
unsigned deflate_from(const file_path& path, std::FILE* out, uint64_t& compressed) {
    unique_file in(std::fopen(path.c_str(), "rb"));
    if (!in)
        return nimpacker::cannot_read_file;
    z_stream stream{};
    if (deflateInit(&stream, 9) != Z_OK)
        return nimpacker::deflater_failed;
    std::unique_ptr<z_stream, int (*)(z_stream*)> guard(&stream, deflateEnd);

    unsigned char input[chunk];
    unsigned char window[chunk];
    compressed = 0;
    int flush = Z_NO_FLUSH;
    do {
        const size_t n = std::fread(input, 1, chunk, in.get());
        if (std::ferror(in.get()))
            return nimpacker::cannot_read_file;
        flush = std::feof(in.get()) ? Z_FINISH : Z_NO_FLUSH;
        stream.next_in = input;
        stream.avail_in = static_cast<uInt>(n);
        do {
            stream.next_out = window;
            stream.avail_out = chunk;
            if (deflate(&stream, flush) == Z_STREAM_ERROR)
                return nimpacker::deflater_failed;
            const size_t produced = chunk - stream.avail_out;
            if (produced > 0 && std::fwrite(window, 1, produced, out) != produced)
                return nimpacker::pack_write_failed;
            compressed += produced;
        } while (stream.avail_out == 0);
    } while (flush != Z_FINISH);
    return nimpacker::success;
}

std::string temporary_name(const file_path& target) {
    static std::atomic<unsigned> counter{0};
    return target.to_string() + ".~" + std::to_string(::getpid()) + "." + std::to_string(counter++);
}

unsigned write_pack(const file_path& source, const pack_listing& listing, std::FILE* out) {
    std::string table;
    put_u32(table, nimpacker::magic);
    put_u32(table, static_cast<uint32_t>(listing.folders.size()));
    for (const std::string& folder : listing.folders) {
        put_u32(table, static_cast<uint32_t>(folder.size()));
        table += folder;
    }
    put_u32(table, static_cast<uint32_t>(listing.files.size()));
    const size_t file_table = table.size();
    for (const std::string& file : listing.files)
        table.append(4 + file.size() + file_record_tail, '\0');
    if (table.size() > UINT32_MAX)
        return nimpacker::pack_too_large;
    if (std::fwrite(table.data(), 1, table.size(), out) != table.size())
        return nimpacker::pack_write_failed;

    // The data blocks follow the tables in file order; the records are filled in as they are known.
    uint64_t offset = table.size();
    std::string records;
    for (const std::string& name : listing.files) {
        const file_path path = source.append(file_path(name));
        const file_stats stats(path);
        uint64_t compressed = 0;
        if (const unsigned code = deflate_from(path, out, compressed); code != nimpacker::success)
            return code;
        if (offset + compressed > UINT32_MAX)
            return nimpacker::pack_too_large;
        put_u32(records, static_cast<uint32_t>(name.size()));
        records += name;
        put_u32(records, static_cast<uint32_t>(stats.size > UINT32_MAX ? UINT32_MAX : stats.size));
        put_u32(records, static_cast<uint32_t>(compressed));
        put_u32(records, static_cast<uint32_t>(offset));
        put_u64(records, static_cast<uint64_t>(stats.created));
        put_u64(records, static_cast<uint64_t>(stats.modified));
        offset += compressed;
    }
    if (::fseeko(out, static_cast<off_t>(file_table), SEEK_SET) != 0 ||
        std::fwrite(records.data(), 1, records.size(), out) != records.size())
        return nimpacker::pack_write_failed;
    return nimpacker::success;
}

} // namespace

unsigned nimpacker::pack_files(const file_path& source_folder, const file_path& pack_file) {
    if (file_stats(source_folder).type != 1)
        return source_not_a_folder;
    if (pack_file.empty())
        return cannot_create_pack;
    const pack_listing listing = list_tree(source_folder);

    const std::string temp = temporary_name(pack_file);
    std::FILE* out = std::fopen(temp.c_str(), "wb");
    if (!out)
        return cannot_create_pack;
    unsigned code = write_pack(source_folder, listing, out);
    if (code == success && (std::fflush(out) != 0 || ::fsync(::fileno(out)) != 0))
        code = pack_write_failed;
    if (std::fclose(out) != 0 && code == success)
        code = pack_write_failed;
    if (code == success && std::rename(temp.c_str(), pack_file.c_str()) != 0)
        code = cannot_create_pack;
    if (code != success)
        std::remove(temp.c_str());
    return code;
}

unsigned nimpacker::unpack_files(const file_path& pack_file, const file_path& destination) {
    unique_file in(std::fopen(pack_file.c_str(), "rb"));
    if (!in)
        return cannot_open_pack;
    return unpack(pack_source(in.get()), destination);
}

unsigned nimpacker::unpack_files(const unsigned char* data, unsigned long size,
                                 const file_path& destination) {
    if (data == nullptr)
        size = 0;
    return unpack(pack_source(data, size), destination);
}

} // namespace nimbit
