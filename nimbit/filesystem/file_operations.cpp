#include "nimbit/filesystem/file_operations.h"

#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/filesystem/folder_iterator.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <dirent.h>
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

struct file_closer {
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using unique_file = std::unique_ptr<std::FILE, file_closer>;

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
    if (path.empty())
        return false;
    if (DIR* dir = ::opendir(path.c_str())) {
        std::vector<std::pair<file_path, bool>> entries;
        while (const dirent* entry = ::readdir(dir)) {
            const std::string_view name = entry->d_name;
            if (name == "." || name == "..")
                continue;
            file_path child = path.append(file_path(name));
            struct stat st;
            // lstat: a link to a folder is removed as a link, its target is left alone.
            const bool sub_folder = ::lstat(child.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
            entries.emplace_back(std::move(child), sub_folder);
        }
        ::closedir(dir);
        for (const auto& [child, sub_folder] : entries) {
            if (sub_folder)
                remove_dir(child);
            else
                std::remove(child.c_str());
        }
    }
    return ::rmdir(path.c_str()) == 0;
}

bool remove_file(const file_path& path) {
    return !path.empty() && std::remove(path.c_str()) == 0;
}

bool copy_file(const file_path& from, const file_path& to) {
    if (from.empty() || to.empty())
        return false;
    unique_file in(std::fopen(from.c_str(), "rb"));
    if (!in)
        return false;
    unique_file out(std::fopen(to.c_str(), "wb"));
    if (!out)
        return false;
    char buffer[65536];
    for (;;) {
        const size_t n = std::fread(buffer, 1, sizeof buffer, in.get());
        if (n > 0 && std::fwrite(buffer, 1, n, out.get()) != n)
            return false;
        if (n < sizeof buffer)
            break;
    }
    if (std::ferror(in.get()))
        return false;
    return std::fclose(out.release()) == 0;
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

} // namespace nimbit
