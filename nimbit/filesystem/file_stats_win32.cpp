#include "nimbit/filesystem/file_stats.h"

#include "nimbit/filesystem/file_descriptor.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/utils/wide_string_win32.h"

#include <windows.h>

namespace nimbit {

namespace {

int64_t to_seconds(FILETIME t) {
    const int64_t ticks = static_cast<int64_t>(uint64_t(t.dwHighDateTime) << 32 | t.dwLowDateTime);
    return ticks == 0 ? 0 : (ticks - 116'444'736'000'000'000) / 10'000'000;
}

} // namespace

file_stats::file_stats(const file_path& path) {
    if (path.empty())
        return;
    const std::wstring wide = widen(path.to_string());
    // Opened without access rights and with backup semantics, so that folders answer too and a
    // link is followed to what it names, as stat() does.
    const file_descriptor file(CreateFileW(wide.c_str(), 0,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                           OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION info;
    if (file && GetFileInformationByHandle(static_cast<HANDLE>(file.get()), &info)) {
        exists = true;
        size = uint64_t(info.nFileSizeHigh) << 32 | info.nFileSizeLow;
        created = to_seconds(info.ftCreationTime);
        modified = to_seconds(info.ftLastWriteTime);
        const bool disk = GetFileType(static_cast<HANDLE>(file.get())) == FILE_TYPE_DISK;
        type = !disk ? 2 : (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) ? 1 : 0;
        return;
    }
    // A file held open without sharing still has its attributes read from the folder.
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!GetFileAttributesExW(wide.c_str(), GetFileExInfoStandard, &data))
        return;
    exists = true;
    size = uint64_t(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
    created = to_seconds(data.ftCreationTime);
    modified = to_seconds(data.ftLastWriteTime);
    type = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) ? 1 : 0;
}

} // namespace nimbit
