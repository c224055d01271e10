#pragma once

#include "nimbit/filesystem/file_descriptor.h"

#include <cstdint>

namespace nimbit {

class file_path;

enum class memory_map_access : uint32_t { read = 0, read_write = 1 };

// One file and, at most, one shared mapping of it. The mapping is either the whole file (made at
// construction unless deferred) or a page-aligned window chosen with remap(), so a large file can be
// used through a small view. Nothing here throws or stops the program: a file that cannot be opened,
// sized or mapped leaves data() null, and callers treat that as a miss.
class memory_map {
public:
    // Opens path (created with mode 0777 when writable). The mapping length is size when it is
    // non-zero or when a writable file is truncated, else the file's present length. A writable file
    // shorter than that length, or any writable file when truncate is set, is set to that length.
    // A zero length closes the file again; otherwise the whole length is mapped unless deferred.
    memory_map(const file_path& path, memory_map_access access, uint64_t size, bool deferred, bool truncate);
    ~memory_map();
    memory_map(const memory_map&) = delete;
    memory_map& operator=(const memory_map&) = delete;

    // Replaces the present view by one that starts at offset rounded down to page_size() and
    // covers [offset, offset + length); returns the rounded offset. The range must lie inside the
    // file: a view past the end would fault on access. On failure the map is ended (data() null).
    uint64_t remap(uint64_t offset, uint64_t length);
    // Unmaps and closes the file.
    void end_map();

    // Sets a writable file's length (the view is dropped); false leaves the file as it was.
    bool resize(uint64_t length);
    // Makes sure the disk holds blocks for [offset, offset + length), so that writing through the
    // mapping cannot fault on a full disk; false when the space is not there.
    bool reserve(uint64_t offset, uint64_t length);

    // Writes through the file, not the mapping (the present view sees the bytes too); false on a
    // write error such as a full disk, where a store through the mapping would fault instead.
    bool write(uint64_t offset, const void* bytes, uint64_t size);

    // Whether the file opened at construction (it may have been closed since).
    bool opened() const { return was_opened; }
    bool is_open() const { return bool(file); }
    bool writable() const { return access == memory_map_access::read_write; }
    // The file's length as last set or seen.
    uint64_t size() const { return length; }
    // The file's length now, looked up again (another process may have cut the file).
    uint64_t current_size();
    // Whether path still names the open file, not one made in its place since (or nothing).
    bool same_file(const file_path& path) const;
    // The present view: its first byte, its file offset and its length.
    unsigned char* data() const { return view; }
    uint64_t view_offset() const { return offset_of_view; }
    uint64_t view_size() const { return size_of_view; }

    // The alignment of a view's start: the page size on POSIX, the allocation granularity (64 KiB)
    // on Windows.
    static uint64_t page_size();

private:
    void drop_view();

    memory_map_access access;
    file_descriptor file;
    bool was_opened = false;
    uint64_t length = 0;
    unsigned char* view = nullptr;
    uint64_t offset_of_view = 0;
    uint64_t size_of_view = 0;
};

} // namespace nimbit
