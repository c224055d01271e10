#pragma once

// One folder's entries read one by one, for folder_iterator: folder_listing_posix.cpp reads them
// with readdir, folder_listing_win32.cpp with FindFirstFileExW.

#include "nimbit/filesystem/file_path.h"

#include <memory>
#include <string>

namespace nimbit {

class folder_listing {
public:
    folder_listing();
    ~folder_listing();
    folder_listing(const folder_listing&) = delete;
    folder_listing& operator=(const folder_listing&) = delete;

    // Starts reading the folder (the current folder when empty), ending any earlier one.
    bool open(const file_path& folder);
    // The next entry: its name, and whether it is a folder (a link to one is not). False at the end.
    bool next(std::string& name, bool& is_folder);

private:
    struct impl;
    std::unique_ptr<impl> self;
};

} // namespace nimbit
