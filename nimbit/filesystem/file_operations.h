#pragma once

#include <cstdint>
#include <vector>

namespace nimbit {

class file_descriptor;
class file_path;

// Free file operations. None of them throws; each reports success.

// Creates the folder and every missing parent (permissions 0777 before the umask, where there are
// permission bits). An existing
// folder is success; an existing file of that name is not.
bool make_dir(const file_path& path);
// Deletes the folder and everything below it. Symbolic links are removed, never followed: a link
// given as the folder is removed itself, and each folder is opened relative to its parent without
// following, so a link swapped in meanwhile is not descended either. Returns whether the folder
// (or the link) is gone at the end; a file given as the folder is left alone and is a failure.
bool remove_dir(const file_path& path);
bool remove_file(const file_path& path);
// The whole file in out; false for a missing or unreadable file, one longer than max_bytes, or when
// memory runs out (out is then unspecified).
bool read_file(const file_path& path, std::vector<unsigned char>& out,
               uint64_t max_bytes = uint64_t(1) << 30);
// Copies the bytes of a file, creating or truncating the target. A target that is the source
// itself (the same path, or another name for the same file) fails and leaves it untouched.
bool copy_file(const file_path& from, const file_path& to);
// Copies the folder from, with everything below it, into to/<name of from>. Both must be existing
// folders, and to must not lie inside from.
bool copy_dir(const file_path& from, const file_path& to);
// Sets the creation and modification dates (seconds since the epoch) where the platform can.
bool set_file_dates(const file_path& path, int64_t created, int64_t modified);
// The same for a file open for writing, so that no path is looked up again.
bool set_file_dates(const file_descriptor& file, int64_t created, int64_t modified);

} // namespace nimbit
