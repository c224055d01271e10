#include "nimbit/filesystem/folder_listing.h"

#include <dirent.h>
#include <sys/stat.h>

namespace nimbit {

struct folder_listing::impl {
    DIR* dir = nullptr;
    file_path folder;
    void close() {
        if (dir)
            ::closedir(dir);
        dir = nullptr;
    }
};

folder_listing::folder_listing() : self(std::make_unique<impl>()) {}
folder_listing::~folder_listing() {
    self->close();
}

bool folder_listing::open(const file_path& folder) {
    self->close();
    self->folder = folder;
    self->dir = ::opendir(folder.empty() ? "." : folder.c_str());
    return self->dir != nullptr;
}

bool folder_listing::next(std::string& name, bool& is_folder) {
    const dirent* entry = self->dir ? ::readdir(self->dir) : nullptr;
    if (!entry)
        return false;
    name = entry->d_name;
    is_folder = entry->d_type == DT_DIR;
    if (entry->d_type == DT_UNKNOWN) {
        // Some file systems leave the type to a separate status call.
        struct stat st;
        is_folder = ::lstat(self->folder.append(file_path(name)).c_str(), &st) == 0 && S_ISDIR(st.st_mode);
    }
    return true;
}

} // namespace nimbit
