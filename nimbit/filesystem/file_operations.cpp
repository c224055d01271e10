#include "nimbit/filesystem/file_operations.h"

#include "nimbit/filesystem/file_descriptor.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/filesystem/folder_iterator.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nimbit {

namespace {

bool is_folder(const file_path& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool make_one(const file_path& path) {
    if (::mkdir(path.c_str(), 0777) == 0)
        return true;
    return errno == EEXIST && is_folder(path);
}

// Deletes everything in the open folder. Entries are looked at without following links, and a
// sub-folder is opened relative to this one with O_NOFOLLOW: a link, even one put in place of a
// folder after it was looked at, is unlinked or left, never descended.
void remove_contents(int folder) {
    std::vector<std::string> names;
    const int listing = ::fcntl(folder, F_DUPFD_CLOEXEC, 0);
    DIR* dir = listing >= 0 ? ::fdopendir(listing) : nullptr;
    if (!dir) {
        if (listing >= 0)
            ::close(listing);
        return;
    }
    while (const dirent* entry = ::readdir(dir)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    ::closedir(dir);

    for (const std::string& name : names) {
        struct stat st;
        if (::fstatat(folder, name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        if (!S_ISDIR(st.st_mode)) {
            ::unlinkat(folder, name.c_str(), 0);
            continue;
        }
        file_descriptor sub(::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!sub)
            continue;
        remove_contents(sub.get());
        sub.close();
        ::unlinkat(folder, name.c_str(), AT_REMOVEDIR);
    }
}

// The canonical form of an existing path, for containment checks.
std::string real_path(const file_path& path) {
    char buffer[PATH_MAX];
    return ::realpath(path.c_str(), buffer) ? std::string(buffer) : std::string();
}

} // namespace

bool make_dir(const file_path& path) {
    if (path.empty())
        return false;
    if (::mkdir(path.c_str(), 0777) == 0)
        return true;
    if (errno == EEXIST)
        return is_folder(path);
    if (errno != ENOENT)
        return false;

    // Climb until a parent exists or can be made, then create the rest from the top down.
    std::vector<file_path> missing{path};
    for (file_path parent = path.stem(); !parent.empty(); parent = parent.stem()) {
        if (make_one(parent))
            break;
        if (errno != ENOENT)
            return false;
        missing.push_back(parent);
    }
    for (auto it = missing.rbegin(); it != missing.rend(); ++it)
        if (!make_one(*it))
            return false;
    return true;
}

bool remove_dir(const file_path& path) {
    // A trailing "/" would make the system resolve a link at the end of the path after all.
    std::string name = path.to_string();
    while (name.size() > 1 && name.back() == '/')
        name.pop_back();
    if (name.empty())
        return false;
    file_descriptor folder(::open(name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder) {
        struct stat st;
        return ::lstat(name.c_str(), &st) == 0 && S_ISLNK(st.st_mode) && ::unlink(name.c_str()) == 0;
    }
    remove_contents(folder.get());
    folder.close();
    return ::rmdir(name.c_str()) == 0;
}

bool remove_file(const file_path& path) {
    return !path.empty() && std::remove(path.c_str()) == 0;
}

bool copy_file(const file_path& from, const file_path& to) {
    if (from.empty() || to.empty())
        return false;
    const file_descriptor in(::open(from.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat source;
    if (!in || ::fstat(in.get(), &source) != 0 || S_ISDIR(source.st_mode))
        return false;
    // Opened without truncating, so that the target can be compared with the source first.
    file_descriptor out(::open(to.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
    struct stat target;
    if (!out || ::fstat(out.get(), &target) != 0)
        return false;
    if (source.st_dev == target.st_dev && source.st_ino == target.st_ino)
        return false;
    if (S_ISREG(target.st_mode) && ::ftruncate(out.get(), 0) != 0)
        return false;
    char buffer[65536];
    for (;;) {
        const ssize_t n = ::read(in.get(), buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return false;
        if (n == 0)
            break;
        if (!write_all(out.get(), buffer, static_cast<size_t>(n)))
            return false;
    }
    return out.close() == 0;
}

bool copy_dir(const file_path& from, const file_path& to) {
    if (file_stats(from).type != 1 || file_stats(to).type != 1)
        return false;
    // Copying a folder into itself would keep finding the copies it has just made.
    const std::string source = real_path(from);
    const std::string target_parent = real_path(to);
    if (source.empty() || target_parent.empty() || target_parent == source ||
        target_parent.rfind(source + "/", 0) == 0)
        return false;

    const file_path target = to.append(file_path(from.leaf(true)));
    if (!make_dir(target))
        return false;
    const size_t prefix = from.append(file_path("x")).to_string().size() - 1;
    bool ok = true;
    for (const folder_entry& entry : folder_enumerator{from, true}) {
        const std::string& text = entry.path.to_string();
        const std::string name = entry.path.leaf(true);
        if (name == "." || name == ".." || text.size() <= prefix)
            continue;
        const file_path destination = target.append(file_path(text.substr(prefix)));
        if (entry.is_folder)
            ok = make_dir(destination) && ok;
        else
            ok = copy_file(entry.path, destination) && ok;
    }
    return ok;
}

bool read_file(const file_path& path, std::vector<unsigned char>& out, uint64_t max_bytes) {
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f)
        return false;
    bool ok = std::fseek(f, 0, SEEK_END) == 0;
    const long length = ok ? std::ftell(f) : -1;
    ok = ok && length >= 0 && static_cast<uint64_t>(length) <= max_bytes && std::fseek(f, 0, SEEK_SET) == 0;
    try {
        if (ok) {
            out.resize(static_cast<size_t>(length));
            ok = length == 0 || std::fread(out.data(), 1, out.size(), f) == out.size();
        }
    } catch (const std::bad_alloc&) {
        ok = false;
    }
    std::fclose(f);
    return ok;
}

} // namespace nimbit
