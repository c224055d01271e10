#pragma once

#include "nimbit/filesystem/file_path.h"

#include <memory>

namespace nimbit {

// What to walk: a folder, and whether to descend into its sub-folders.
struct folder_enumerator {
    file_path folder;
    bool recursive = false;
};

// One entry met by the walk. path is the walked folder joined with the entry's relative folder and
// its name, so it can be handed straight to file_stats.
struct folder_entry {
    bool is_folder = false;
    file_path path;
};

// Walks a folder in the platform's entry order. With recursion, sub-folders are visited
// breadth-first: each one met (but "." and "..") is queued and opened after the current folder is
// exhausted. "." and ".." are yielded like any other entry, so callers filter by name. A folder that
// cannot be opened ends the walk. Symbolic links are yielded but never followed.
//
//   for (const folder_entry& entry : folder_enumerator{root, true}) ...
//   for (folder_iterator it({root, true}); !it.at_end(); ++it) ...
class folder_iterator {
public:
    folder_iterator(); // the end of every walk
    explicit folder_iterator(const folder_enumerator& enumerator);
    folder_iterator(folder_iterator&&) noexcept;
    folder_iterator& operator=(folder_iterator&&) noexcept;
    ~folder_iterator();

    bool at_end() const { return state == nullptr; }
    const folder_entry& operator*() const { return current; }
    const folder_entry* operator->() const { return &current; }
    folder_iterator& operator++();
    // Iterators compare equal only when both are at the end.
    friend bool operator==(const folder_iterator& a, const folder_iterator& b) {
        return a.at_end() && b.at_end();
    }

private:
    struct walk_state;
    std::unique_ptr<walk_state> state;
    folder_entry current;
};

inline folder_iterator begin(const folder_enumerator& e) {
    return folder_iterator(e);
}
inline folder_iterator end(const folder_enumerator&) {
    return folder_iterator();
}

} // namespace nimbit
