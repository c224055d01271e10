#include "nimbit/filesystem/folder_iterator.h"

#include <deque>
#include <string>

#include <dirent.h>
#include <sys/stat.h>

namespace nimbit {

struct folder_iterator::walk_state {
    file_path root;
    bool recursive = false;
    DIR* dir = nullptr;
    file_path folder;              // the folder being read: root joined with its relative path
    std::deque<file_path> pending; // sub-folders met but not opened yet, breadth-first

    ~walk_state() {
        if (dir)
            ::closedir(dir);
    }

    bool open(const file_path& path) {
        if (dir)
            ::closedir(dir);
        folder = path;
        dir = ::opendir(path.empty() ? "." : path.c_str());
        return dir != nullptr;
    }
};

namespace {

bool is_dot_entry(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

} // namespace

folder_iterator::folder_iterator() = default;
folder_iterator::folder_iterator(folder_iterator&&) noexcept = default;
folder_iterator& folder_iterator::operator=(folder_iterator&&) noexcept = default;
folder_iterator::~folder_iterator() = default;

folder_iterator::folder_iterator(const folder_enumerator& enumerator)
    : state(std::make_unique<walk_state>()) {
    state->root = enumerator.folder;
    state->recursive = enumerator.recursive;
    if (!state->open(enumerator.folder)) {
        state.reset();
        return;
    }
    ++*this;
}

folder_iterator& folder_iterator::operator++() {
    if (!state)
        return *this;
    for (;;) {
        if (const dirent* entry = ::readdir(state->dir)) {
            current.path = state->folder.append(file_path(entry->d_name));
            bool is_folder = entry->d_type == DT_DIR;
            if (entry->d_type == DT_UNKNOWN) {
                // Some file systems leave the type to a separate status call.
                struct stat st;
                is_folder = ::lstat(current.path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
            }
            current.is_folder = is_folder;
            if (is_folder && state->recursive && !is_dot_entry(entry->d_name))
                state->pending.push_back(current.path);
            return *this;
        }
        if (state->pending.empty() || !state->open(state->pending.front())) {
            state.reset();
            current = {};
            return *this;
        }
        state->pending.pop_front();
    }
}

} // namespace nimbit
