#include "nimbit/filesystem/nimpacker.h"

#include "nimbit/filesystem/file_descriptor.h"
#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/filesystem/folder_iterator.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <zlib.h>

namespace nimbit {

namespace {

constexpr size_t chunk = 16384;
constexpr size_t file_record_tail = 28; // size, compressed length, offset, two dates

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

// Splits a record's path into the names to walk down from the destination, dropping "." ones.
// Refused: absolute paths, ".." and empty components, NUL bytes (which would cut the name short on
// its way to the system), a path that names the destination itself, and names the platform would
// read as something else (on Windows "\\", ":", device names).
bool split_relative_path(std::string_view name, std::vector<std::string>& parts) {
    parts.clear();
    if (name.empty() || name.front() == '/' || name.find('\0') != std::string_view::npos)
        return false;
    size_t start = 0;
    while (start <= name.size()) {
        size_t slash = name.find('/', start);
        if (slash == std::string_view::npos)
            slash = name.size();
        const std::string_view part = name.substr(start, slash - start);
        if (part.empty() || part == "..")
            return false;
        if (part != ".") {
            parts.emplace_back(part);
            if (!name_is_portable(parts.back()))
                return false;
        }
        start = slash + 1;
    }
    return !parts.empty();
}

// The pack's bytes, read at given positions. Either a block of memory or an open file; a file is
// read through a window of its own, so the many small reads of the tables (read twice) and the
// jumps between them and the streams cost few system calls.
class pack_source {
public:
    pack_source(const unsigned char* data, uint64_t size) : data(data), total(size) {}
    explicit pack_source(const file_descriptor& file) : file(&file), window(new unsigned char[window_size]) {
        file_facts facts;
        if (describe(file, facts))
            total = facts.size;
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
        if (n > window_size)
            return read_at(*file, pos, out, n);
        if (pos < window_pos || pos + n > window_pos + window_length) {
            const size_t length = static_cast<size_t>(std::min<uint64_t>(window_size, total - pos));
            if (!read_at(*file, pos, window.get(), length))
                return false;
            window_pos = pos;
            window_length = length;
        }
        std::memcpy(out, window.get() + (pos - window_pos), n);
        return true;
    }

private:
    static constexpr size_t window_size = 65536;

    const unsigned char* data = nullptr;
    const file_descriptor* file = nullptr;
    uint64_t total = 0;
    std::unique_ptr<unsigned char[]> window;
    mutable uint64_t window_pos = 0;
    mutable size_t window_length = 0;
};

// One entry of the file table, its path already split and checked.
struct file_record {
    std::vector<std::string> path;
    uint32_t size = 0; // uncompressed
    uint32_t compressed = 0;
    uint32_t offset = 0;
    int64_t created = 0, modified = 0;
};

// Reads a length-prefixed name at pos; false when it does not fit in the pack.
bool read_name(const pack_source& pack, uint64_t& pos, std::string& name) {
    unsigned char word[4];
    if (!pack.read(pos, word, 4))
        return false;
    const uint32_t length = read_u32(word);
    pos += 4;
    // Checked before resizing, so that a damaged length allocates nothing.
    if (length > pack.size() - pos)
        return false;
    name.resize(length);
    if (!pack.read(pos, name.data(), length))
        return false;
    pos += length;
    return true;
}

// Reads the tables in order, handing each record to on_folder(path parts) or on_file(record),
// and stops at the first damaged record or the first code other than success they return.
// Nothing is kept, so memory does not grow with the record counts a pack claims.
template <class on_folder_t, class on_file_t>
unsigned read_tables(const pack_source& pack, on_folder_t on_folder, on_file_t on_file) {
    unsigned char word[4];
    if (!pack.read(0, word, 4) || read_u32(word) != nimpacker::magic)
        return nimpacker::bad_magic;
    uint64_t pos = 4;
    if (!pack.read(pos, word, 4))
        return nimpacker::folder_table_truncated;
    const uint32_t folder_count = read_u32(word);
    pos += 4;

    std::string name;
    std::vector<std::string> parts;
    for (uint32_t i = 0; i < folder_count; ++i) {
        if (!read_name(pack, pos, name))
            return nimpacker::folder_table_truncated;
        if (!split_relative_path(name, parts))
            return nimpacker::cannot_create_folder;
        if (const unsigned code = on_folder(parts); code != nimpacker::success)
            return code;
    }

    if (!pack.read(pos, word, 4))
        return nimpacker::file_table_truncated;
    const uint32_t file_count = read_u32(word);
    pos += 4;

    unsigned char tail[file_record_tail];
    file_record record;
    for (uint32_t i = 0; i < file_count; ++i) {
        if (!read_name(pack, pos, name) || !pack.read(pos, tail, sizeof tail))
            return nimpacker::file_table_truncated;
        pos += sizeof tail;
        if (!split_relative_path(name, record.path))
            return nimpacker::cannot_create_file;
        record.size = read_u32(tail);
        record.compressed = read_u32(tail + 4);
        record.offset = read_u32(tail + 8);
        record.created = static_cast<int64_t>(read_u64(tail + 12));
        record.modified = static_cast<int64_t>(read_u64(tail + 20));
        if (uint64_t(record.offset) + record.compressed > pack.size())
            return nimpacker::stream_truncated;
        if (const unsigned code = on_file(record); code != nimpacker::success)
            return code;
    }
    return nimpacker::success;
}

// Opens the folder below base that parts name, making missing ones when asked: base itself when
// there are no parts, else the one holder holds; null on failure. Every step is relative to the
// folder before it and never follows a link (see held_folder).
const held_folder* open_folder(const held_folder& base, const std::string* part, const std::string* end,
                               bool create, held_folder& holder) {
    const held_folder* folder = &base;
    for (; part != end; ++part) {
        held_folder next;
        if (!open_child_folder(*folder, *part, create, next))
            return nullptr;
        holder = std::move(next);
        folder = &holder;
    }
    return folder;
}

// Inflates a record's stream into out. The stream must inflate to exactly the record's size: more
// is a damaged pack (or one made to fill the disk) and is caught before anything past the size is
// written.
unsigned inflate_to(const pack_source& pack, const file_record& record, const file_descriptor& out) {
    if (record.compressed == 0)
        return record.size == 0 ? nimpacker::success : nimpacker::corrupt_stream;
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK)
        return nimpacker::inflater_failed;
    std::unique_ptr<z_stream, int (*)(z_stream*)> guard(&stream, inflateEnd);

    unsigned char in[chunk];
    unsigned char window[chunk];
    uint64_t pos = record.offset;
    uint64_t left = record.compressed;
    uint64_t room = record.size;
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
            if (produced > room)
                return nimpacker::corrupt_stream;
            if (!write_all(out, window, produced))
                return nimpacker::write_failed;
            room -= produced;
        } while (stream.avail_out == 0 && result != Z_STREAM_END);
        const size_t used = n - stream.avail_in;
        pos += used;
        left -= used;
        // The inflater takes all it is given unless the stream ended inside this chunk.
        if (used == 0 && result != Z_STREAM_END)
            return nimpacker::corrupt_stream;
    }
    return room == 0 ? nimpacker::success : nimpacker::corrupt_stream;
}

// Sums the sizes of records read so far; false once they pass the limit.
struct size_budget {
    uint64_t limit;
    uint64_t total = 0;
    bool take(uint32_t size) {
        total += size; // at most 2^32 records of less than 2^32 bytes: no overflow
        return total <= limit;
    }
};

unsigned unpack(const pack_source& pack, const file_path& destination, uint64_t size_limit) {
    // A first reading checks every record and the sizes' sum before anything is written.
    size_budget budget{size_limit};
    bool has_folders = false, has_files = false;
    const unsigned checked = read_tables(
        pack,
        [&](const std::vector<std::string>&) {
            has_folders = true;
            return nimpacker::success;
        },
        [&](const file_record& record) {
            has_files = true;
            return budget.take(record.size) ? nimpacker::success : nimpacker::pack_too_large;
        });
    if (checked != nimpacker::success || (!has_folders && !has_files))
        return checked;

    // The destination's own path is the caller's and may pass through links; nothing below it may.
    const unsigned cannot_open =
        has_folders ? nimpacker::cannot_create_folder : nimpacker::cannot_create_file;
    if (has_folders && !make_dir(destination))
        return cannot_open;
    held_folder root;
    if (!open_root_folder(destination, root))
        return cannot_open;

    // The second reading writes. A pack file changed in between is held to the same limit.
    budget.total = 0;
    return read_tables(
        pack,
        [&](const std::vector<std::string>& path) {
            held_folder folder;
            return open_folder(root, path.data(), path.data() + path.size(), true, folder)
                       ? nimpacker::success
                       : nimpacker::cannot_create_folder;
        },
        [&](const file_record& record) {
            if (!budget.take(record.size))
                return nimpacker::pack_too_large;
            const std::vector<std::string>& path = record.path;
            held_folder holder;
            const held_folder* folder =
                open_folder(root, path.data(), path.data() + path.size() - 1, false, holder);
            file_descriptor out = folder ? create_plain_file(*folder, path.back()) : file_descriptor();
            if (!out)
                return nimpacker::cannot_create_file;
            if (const unsigned code = inflate_to(pack, record, out); code != nimpacker::success)
                return code;
            set_file_dates(out, record.created, record.modified);
            return out.close() ? nimpacker::success : nimpacker::write_failed;
        });
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

// Deflates the file at path onto the end of out; sets the bytes read and the compressed length.
unsigned deflate_from(const file_path& path, const file_descriptor& out, uint64_t& plain,
                      uint64_t& compressed) {
    const file_descriptor in = open_for_reading(path);
    if (!in)
        return nimpacker::cannot_read_file;
    z_stream stream{};
    if (deflateInit(&stream, 9) != Z_OK)
        return nimpacker::deflater_failed;
    std::unique_ptr<z_stream, int (*)(z_stream*)> guard(&stream, deflateEnd);

    unsigned char input[chunk];
    unsigned char window[chunk];
    plain = compressed = 0;
    int flush = Z_NO_FLUSH;
    do {
        const int64_t got = read_up_to(in, plain, input, chunk);
        if (got < 0)
            return nimpacker::cannot_read_file;
        const size_t n = static_cast<size_t>(got);
        plain += n;
        flush = n < chunk ? Z_FINISH : Z_NO_FLUSH;
        stream.next_in = input;
        stream.avail_in = static_cast<uInt>(n);
        do {
            stream.next_out = window;
            stream.avail_out = chunk;
            if (deflate(&stream, flush) == Z_STREAM_ERROR)
                return nimpacker::deflater_failed;
            const size_t produced = chunk - stream.avail_out;
            if (produced > 0 && !write_all(out, window, produced))
                return nimpacker::pack_write_failed;
            compressed += produced;
        } while (stream.avail_out == 0);
    } while (flush != Z_FINISH);
    return nimpacker::success;
}

std::string temporary_name(const file_path& target) {
    static std::atomic<unsigned> counter{0};
    return target.to_string() + ".~" + std::to_string(process_id()) + "." + std::to_string(counter++);
}

unsigned write_pack(const file_path& source, const pack_listing& listing, const file_descriptor& out) {
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
    if (!write_all(out, table.data(), table.size()))
        return nimpacker::pack_write_failed;

    // The data blocks follow the tables in file order; the records are filled in as they are known.
    uint64_t offset = table.size();
    std::string records;
    for (const std::string& name : listing.files) {
        const file_path path = source.append(file_path(name));
        const file_stats stats(path);
        uint64_t plain = 0, compressed = 0;
        if (const unsigned code = deflate_from(path, out, plain, compressed); code != nimpacker::success)
            return code;
        // The size recorded is what was read, so that it matches the stream even if the file
        // changed since it was listed; unpacking holds every stream to it.
        if (offset + compressed > UINT32_MAX || plain > UINT32_MAX)
            return nimpacker::pack_too_large;
        put_u32(records, static_cast<uint32_t>(name.size()));
        records += name;
        put_u32(records, static_cast<uint32_t>(plain));
        put_u32(records, static_cast<uint32_t>(compressed));
        put_u32(records, static_cast<uint32_t>(offset));
        put_u64(records, static_cast<uint64_t>(stats.created));
        put_u64(records, static_cast<uint64_t>(stats.modified));
        offset += compressed;
    }
    if (!write_at(out, file_table, records.data(), records.size()))
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

    const file_path temp(temporary_name(pack_file));
    bool exists = false;
    file_descriptor out = create_new_file(temp, exists);
    if (!out)
        return cannot_create_pack;
    unsigned code = write_pack(source_folder, listing, out);
    if (code == success && !sync_file(out))
        code = pack_write_failed;
    if (!out.close() && code == success)
        code = pack_write_failed;
    if (code == success && !replace_file(temp, pack_file))
        code = cannot_create_pack;
    if (code != success)
        delete_file(temp);
    return code;
}

unsigned nimpacker::unpack_files(const file_path& pack_file, const file_path& destination,
                                 uint64_t size_limit) {
    const file_descriptor in = open_for_reading(pack_file);
    if (!in)
        return cannot_open_pack;
    return unpack(pack_source(in), destination, size_limit);
}

unsigned nimpacker::unpack_files(const unsigned char* data, unsigned long size, const file_path& destination,
                                 uint64_t size_limit) {
    if (data == nullptr)
        size = 0;
    return unpack(pack_source(data, size), destination, size_limit);
}

} // namespace nimbit
