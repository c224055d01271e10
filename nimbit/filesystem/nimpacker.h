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
// Unpacking never reads outside the pack and never writes outside the destination: a record with
// an absolute path or a ".." component is refused before anything is created for it. Files written
// before a failing record stay on disk.
class nimpacker {
public:
    static constexpr uint32_t magic = 0x1a5e626e;

    // Results of unpack_files.
    static constexpr unsigned success = 0;
    static constexpr unsigned cannot_open_pack = 10;
    static constexpr unsigned bad_magic = 11;
    static constexpr unsigned file_table_truncated = 12;
    static constexpr unsigned cannot_create_file = 20; // also: a file path leaving the destination
    static constexpr unsigned corrupt_stream = 22;
    static constexpr unsigned write_failed = 23;
    static constexpr unsigned stream_truncated = 24; // the data ran out before the stream's end
    static constexpr unsigned folder_table_truncated = 30;
    static constexpr unsigned cannot_create_folder = 31; // also: a folder path leaving the destination
    static constexpr unsigned inflater_failed = 100;

    // Results of pack_files other than success.
    static constexpr unsigned source_not_a_folder = 40;
    static constexpr unsigned cannot_create_pack = 41;
    static constexpr unsigned cannot_read_file = 42;
    static constexpr unsigned pack_write_failed = 43;
    static constexpr unsigned pack_too_large = 44; // offsets are 32-bit
    static constexpr unsigned deflater_failed = 101;

    // Packs everything below source_folder. The pack is written beside its final name and renamed
    // into place, so a failed pack leaves an earlier file of that name untouched.
    static unsigned pack_files(const file_path& source_folder, const file_path& pack_file);
    // Unpacks into destination, overwriting files of the same names. The folder records create
    // the destination on the way; a pack without folders needs it to exist.
    static unsigned unpack_files(const file_path& pack_file, const file_path& destination);
    static unsigned unpack_files(const unsigned char* data, unsigned long size, const file_path& destination);
};

} // namespace nimbit
