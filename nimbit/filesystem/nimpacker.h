#pragma once

#include <cstdint>

namespace nimbit {

class file_path;

// Packs a folder tree into one file and back. The pack holds a header (magic, folder count), the
// folder records (relative paths, parents first), the file records (relative path, uncompressed
// size, compressed length, data offset, creation and modification dates) and one zlib stream per
// non-empty file. Integers are little-endian. Work is streamed in 16 KiB steps, so memory use does
// not grow with the file sizes.
//
// Unpacking never reads outside the pack and never writes outside the destination. The tables are
// read and checked in full before anything is written: a record with an absolute path, a ".." or
// empty component or a NUL byte, a stream outside the pack, or sizes adding up to more than the
// caller's limit refuse the whole pack. Below the destination nothing is followed: folders are
// walked one by one without following links, and a file is only written when it is new or a plain
// file of a single name, so a link, hard link, pipe or device already there (or put there while
// unpacking) fails its record. Each stream must inflate to exactly its record's size; at most that
// many bytes are written. Files written before a failing record stay on disk, the failing one
// with at most its record's size.
class nimpacker {
public:
    static constexpr uint32_t magic = 0x1a5e626e;

    // Results of unpack_files.
    static constexpr unsigned success = 0;
    static constexpr unsigned cannot_open_pack = 10;
    static constexpr unsigned bad_magic = 11;
    static constexpr unsigned file_table_truncated = 12;
    static constexpr unsigned cannot_create_file = 20; // also: a bad path, or not a plain file there
    static constexpr unsigned corrupt_stream = 22;     // also: inflating to more or less than the size
    static constexpr unsigned write_failed = 23;
    static constexpr unsigned stream_truncated = 24; // the data ran out before the stream's end
    static constexpr unsigned folder_table_truncated = 30;
    static constexpr unsigned cannot_create_folder = 31; // also: a bad path, or a link there
    static constexpr unsigned inflater_failed = 100;
    // pack_too_large (below): the records' sizes add up to more than the limit given.

    // Results of pack_files other than success.
    static constexpr unsigned source_not_a_folder = 40;
    static constexpr unsigned cannot_create_pack = 41;
    static constexpr unsigned cannot_read_file = 42;
    static constexpr unsigned pack_write_failed = 43;
    static constexpr unsigned pack_too_large = 44; // offsets and sizes are 32-bit
    static constexpr unsigned deflater_failed = 101;

    // Packs everything below source_folder. The pack is written beside its final name and renamed
    // into place, so a failed pack leaves an earlier file of that name untouched.
    static unsigned pack_files(const file_path& source_folder, const file_path& pack_file);
    // No limit on the sum of the records' sizes.
    static constexpr uint64_t no_limit = UINT64_MAX;

    // Unpacks into destination, overwriting files of the same names. The folder records create
    // the destination on the way; a pack without folders needs it to exist. A pack whose records'
    // sizes add up to more than size_limit bytes is refused with pack_too_large, nothing written;
    // give a limit whenever the pack comes from elsewhere.
    static unsigned unpack_files(const file_path& pack_file, const file_path& destination,
                                 uint64_t size_limit = no_limit);
    static unsigned unpack_files(const unsigned char* data, unsigned long size, const file_path& destination,
                                 uint64_t size_limit = no_limit);
};

} // namespace nimbit
