#include "nimbit/filesystem/write_file_atomic.h"

#include "nimbit/filesystem/file_path.h"

#include "nimbit/filesystem/file_descriptor.h"

#include <atomic>
#include <string>

namespace nimbit {

namespace {

// A name beside the target that no other writer in this or another process picks at the same time.
std::string temporary_name(const file_path& target) {
    static std::atomic<unsigned> counter{0};
    return target.to_string() + ".~" + std::to_string(process_id()) + "." + std::to_string(counter++);
}

} // namespace

bool write_file_atomic(const file_path& path, const void* data, size_t size) {
    if (path.empty() || (data == nullptr && size > 0))
        return false;
    std::string temp;
    file_descriptor file;
    for (int attempt = 0; attempt < 16 && !file; ++attempt) {
        temp = temporary_name(path);
        bool exists = false;
        file = create_new_file(file_path(temp), exists);
        if (!file && !exists)
            return false;
    }
    if (!file)
        return false;

    copy_permissions(path, file);
    bool ok = write_all(file, data, size) && sync_file(file);
    ok = file.close() && ok;
    // The rename replaces the target whole, or fails and leaves it as it was (on Windows also
    // when the target is read-only or held open without sharing).
    ok = ok && replace_file(file_path(temp), path);
    if (!ok) {
        delete_file(file_path(temp));
        return false;
    }
    return true;
}

} // namespace nimbit
