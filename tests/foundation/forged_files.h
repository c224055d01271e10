#pragma once
// Files assembled byte by byte, so that damaged ones can be made on purpose.
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/nimpacker.h"

#include <zlib.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

inline std::string deflated(std::string_view text) {
    uLongf size = compressBound(uLong(text.size()));
    std::string out(size, '\0');
    compress2(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(text.data()),
              uLong(text.size()), 9);
    return out.substr(0, size);
}

// How many bytes a stream inflates to; nothing when it is not a whole stream.
inline long inflated_size(const std::string& stream) {
    std::vector<Bytef> out(2 << 20);
    uLongf size = uLongf(out.size());
    const auto* in = reinterpret_cast<const Bytef*>(stream.data());
    return uncompress(out.data(), &size, in, uLong(stream.size())) == Z_OK ? static_cast<long>(size) : 0;
}

// A folder pack; every field can be made to lie.
struct pack_builder {
    struct file_entry {
        std::string name;
        std::string data; // the stored stream
        long length = -1; // the compressed length written; -1: the data's size
        long offset = -1; // the offset written; -1: where the data really lands
        int64_t created = 0, modified = 0;
        long size = -1; // the plain size written; -1: what the data inflates to
    };
    std::vector<std::string> folders;
    std::vector<file_entry> files;

    static void put(std::string& s, uint64_t v, int bytes = 4) {
        for (int i = 0; i < bytes; ++i)
            s += static_cast<char>(v >> (8 * i));
    }

    std::string build() const {
        std::string out;
        put(out, nimbit::nimpacker::magic);
        put(out, folders.size());
        for (const auto& f : folders)
            put(out, f.size()), out += f;
        put(out, files.size());
        size_t data_at = out.size();
        for (const auto& f : files)
            data_at += 4 + f.name.size() + 28;
        std::string data;
        for (const auto& f : files) {
            put(out, f.name.size()), out += f.name;
            put(out, f.size < 0 ? inflated_size(f.data) : f.size);
            put(out, f.length < 0 ? f.data.size() : f.length);
            put(out, f.offset < 0 ? data_at + data.size() : f.offset);
            put(out, f.created, 8), put(out, f.modified, 8);
            data += f.data;
        }
        return out + data;
    }
};

inline unsigned unpack(const std::string& pack, const nimbit::file_path& destination,
                       uint64_t limit = nimbit::nimpacker::no_limit) {
    return nimbit::nimpacker::unpack_files(reinterpret_cast<const unsigned char*>(pack.data()), pack.size(),
                                           destination, limit);
}
