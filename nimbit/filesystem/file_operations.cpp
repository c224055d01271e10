#include "nimbit/filesystem/file_operations.h"

#include "nimbit/filesystem/file_descriptor.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/filesystem/folder_iterator.h"

#include <new>
#include <string>
#include <vector>

namespace nimbit {

bool make_dir(const file_path& path) {
    if (path.empty())
        return false;
    make_result result = make_one_folder(path);
    if (result == make_result::made)
        return true;
    if (result == make_result::exists)
        return file_stats(path).type == 1;
    if (result != make_result::no_parent)
        return false;

    // Climb until a parent exists or can be made, then create the rest from the top down.
    std::vector<file_path> missing{path};
    for (file_path parent = path.stem(); !parent.empty(); parent = parent.stem()) {
        result = make_one_folder(parent);
        if (result == make_result::made || (result == make_result::exists && file_stats(parent).type == 1))
            break;
        if (result != make_result::no_parent)
            return false;
        missing.push_back(parent);
    }
    for (auto it = missing.rbegin(); it != missing.rend(); ++it) {
        result = make_one_folder(*it);
        if (result != make_result::made && !(result == make_result::exists && file_stats(*it).type == 1))
            return false;
    }
    return true;
}

bool remove_dir(const file_path& path) {
    return remove_tree(path);
}

bool remove_file(const file_path& path) {
    return delete_file(path);
}

bool copy_file(const file_path& from, const file_path& to) {
    if (from.empty() || to.empty())
        return false;
    const file_descriptor in = open_for_reading(from);
    file_facts source;
    if (!in || !describe(in, source) || source.type == 1)
        return false;
    // Opened without truncating, so that the target can be compared with the source first.
    file_descriptor out = open_for_writing(to);
    file_facts target;
    if (!out || !describe(out, target))
        return false;
    if (source.device == target.device && source.inode == target.inode)
        return false;
    if (target.type == 0 && !set_file_length(out, 0))
        return false;
    char buffer[65536];
    for (uint64_t pos = 0;;) {
        const int64_t n = read_up_to(in, pos, buffer, sizeof buffer);
        if (n < 0)
            return false;
        if (n == 0)
            break;
        if (!write_all(out, buffer, static_cast<size_t>(n)))
            return false;
        pos += static_cast<uint64_t>(n);
    }
    return out.close();
}

bool copy_dir(const file_path& from, const file_path& to) {
    if (file_stats(from).type != 1 || file_stats(to).type != 1)
        return false;
    // Copying a folder into itself would keep finding the copies it has just made.
    // Both come back with "/" separators on every platform.
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
    const file_descriptor file = open_for_reading(path);
    file_facts facts;
    if (!file || !describe(file, facts) || facts.type == 1 || facts.size > max_bytes)
        return false;
    try {
        out.resize(static_cast<size_t>(facts.size));
    } catch (const std::bad_alloc&) {
        return false;
    }
    return read_at(file, 0, out.data(), out.size());
}

} // namespace nimbit
