#include "nimbit/filesystem/folder_iterator.h"

#include "nimbit/filesystem/folder_listing.h"

#include <deque>
#include <string>

namespace nimbit {

struct folder_iterator::walk_state {
    file_path root;
    bool recursive = false;
    folder_listing listing;
    file_path folder;              // the folder being read: root joined with its relative path
    std::deque<file_path> pending; // sub-folders met but not opened yet, breadth-first
    std::string name;

    bool open(const file_path& path) {
        folder = path;
        return listing.open(path);
    }
};

namespace {

bool is_dot_entry(const std::string& name) {
    return name == "." || name == "..";
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
        bool is_folder = false;
        if (state->listing.next(state->name, is_folder)) {
            current.path = state->folder.append(file_path(state->name));
            current.is_folder = is_folder;
            if (is_folder && state->recursive && !is_dot_entry(state->name))
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
