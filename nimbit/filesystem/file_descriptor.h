#pragma once

// The few file system calls the foundation makes, behind one interface: file_descriptor_posix.cpp
// implements them over descriptors and the *at() calls, file_descriptor_win32.cpp over handles and
// the W functions. The logic that uses them (packing, atomic saves, the mapped cache) is shared.

#include "nimbit/filesystem/file_path.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace nimbit {

// An open file or folder, closed at the end of its scope unless closed before. A descriptor on
// POSIX, a HANDLE on Windows.
class file_descriptor {
public:
#if defined(_WIN32)
    using native = void*;
    static native invalid() {
        return reinterpret_cast<void*>(static_cast<intptr_t>(-1));
    }
#else
    using native = int;
    static constexpr native invalid() {
        return -1;
    }
#endif

    explicit file_descriptor(native handle = invalid()) : handle(handle) {}
    ~file_descriptor() {
        close();
    }
    file_descriptor(file_descriptor&& other) noexcept : handle(other.handle) {
        other.handle = invalid();
    }
    file_descriptor& operator=(file_descriptor&& other) noexcept {
        if (this != &other) {
            close();
            handle = other.handle;
            other.handle = invalid();
        }
        return *this;
    }
    file_descriptor(const file_descriptor&) = delete;
    file_descriptor& operator=(const file_descriptor&) = delete;

#if defined(_WIN32)
    explicit operator bool() const {
        return handle != invalid() && handle != nullptr;
    }
#else
    explicit operator bool() const {
        return handle >= 0;
    }
#endif
    native get() const {
        return handle;
    }
    // Whether closing succeeded (a late write error shows here); true when nothing was open.
    bool close();

private:
    native handle;
};

// What one open file is. type: 0 regular file, 1 folder, 2 anything else. The identity pair tells
// two names of one file apart from two files (device and inode, volume and file index).
struct file_facts {
    int type = 2;
    uint64_t size = 0;
    uint64_t links = 0;
    uint64_t device = 0;
    uint64_t inode = 0;
};
bool describe(const file_descriptor& file, file_facts& out);

// Opens for reading; other readers, writers and deleters are not kept out.
file_descriptor open_for_reading(const file_path& path);
// Opens for writing, created when missing, never truncated.
file_descriptor open_for_writing(const file_path& path);
// Creates a new file for writing; fails when the name exists (so two writers never share a file).
// exists is set when that was the reason.
file_descriptor create_new_file(const file_path& path, bool& exists);
// Opens a regular file for reading, or for reading and writing (created with mode when missing).
// Anything else at the path (a folder, a pipe, a device) is refused without blocking on it.
file_descriptor open_regular_file(const file_path& path, bool writable, unsigned mode);

// Reads up to n bytes at pos: the count read (short only at the end of the file), or -1.
int64_t read_up_to(const file_descriptor& file, uint64_t pos, void* out, size_t n);
inline bool read_at(const file_descriptor& file, uint64_t pos, void* out, size_t n) {
    return read_up_to(file, pos, out, n) == static_cast<int64_t>(n);
}
// Writes all of data at the file's present position, going on after short writes.
bool write_all(const file_descriptor& file, const void* data, size_t size);
// Writes all of data at pos.
bool write_at(const file_descriptor& file, uint64_t pos, const void* data, size_t size);
bool sync_file(const file_descriptor& file);
bool set_file_length(const file_descriptor& file, uint64_t length);
// Makes sure the disk holds blocks for the range where the system can promise it.
bool reserve_space(const file_descriptor& file, uint64_t offset, uint64_t size);
// Gives file the permission bits of the file at model, where the platform has them.
void copy_permissions(const file_path& model, const file_descriptor& file);
// Sets the permission bits where the platform has them, whatever the umask; failure is harmless.
void set_permissions(const file_descriptor& file, unsigned mode);

// An advisory lock held by this open file (not the process): a second open file of the same path,
// even in the same process, waits for it.
bool lock_file(const file_descriptor& file, bool shared);
void unlock_file(const file_descriptor& file);

// A shared mapping of [start, start + size) of the file; start must be a multiple of
// map_granularity(). Null on failure.
unsigned char* map_view(const file_descriptor& file, uint64_t start, uint64_t size, bool writable);
void unmap_view(unsigned char* view, uint64_t size);
uint64_t map_granularity();

// Renames from over to, replacing it, and makes the rename durable where the system allows.
bool replace_file(const file_path& from, const file_path& to);
bool delete_file(const file_path& path);
// The outcome of making one folder.
enum class make_result { made, exists, no_parent, failed };
make_result make_one_folder(const file_path& path);
// Deletes the folder and everything below it without following any link: see remove_dir.
bool remove_tree(const file_path& path);
// The canonical form of an existing path with "/" separators, or empty.
std::string real_path(const file_path& path);
unsigned long process_id();

// A folder held open below a destination while it is written into. Each step down opens a child
// relative to (or, on Windows, while holding) its parent and never follows a link or reparse
// point, so a link planted below the destination, or swapped in meanwhile, ends the walk instead
// of leading outside it.
struct held_folder {
    file_descriptor handle;
    file_path path;
};
// The caller's own folder; its path may pass through links.
bool open_root_folder(const file_path& path, held_folder& out);
bool open_child_folder(const held_folder& parent, const std::string& name, bool create, held_folder& out);
// Opens name in folder for writing, emptied. Only a plain file of a single name is taken: not a
// link, nor a hard link whose other name may lie outside, nor a pipe or device.
file_descriptor create_plain_file(const held_folder& folder, const std::string& name);
// Whether a name taken from outside may be created by create_plain_file or open_child_folder as
// it is: on Windows, names the system would read as a path, a stream or a device are refused.
bool name_is_portable(const std::string& name);

} // namespace nimbit
