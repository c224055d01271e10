#include "nimbit/filesystem/file_descriptor.h"
#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/utils/wide_string_win32.h"

#include <windows.h>

namespace nimbit {

namespace {

// FILETIME counts 100 ns steps since 1601; the dates here are seconds since 1970.
FILETIME to_file_time(int64_t seconds) {
    const uint64_t ticks = static_cast<uint64_t>(seconds * 10'000'000 + 116'444'736'000'000'000);
    FILETIME t;
    t.dwLowDateTime = static_cast<DWORD>(ticks);
    t.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    return t;
}

bool dates_in_range(int64_t created, int64_t modified) {
    constexpr int64_t earliest = -11'644'473'600, latest = 910'692'730'085; // FILETIME's own range
    return created >= earliest && created <= latest && modified >= earliest && modified <= latest;
}

} // namespace

bool set_file_dates(const file_descriptor& file, int64_t created, int64_t modified) {
    if (!file || !dates_in_range(created, modified))
        return false;
    const FILETIME creation = to_file_time(created), write = to_file_time(modified);
    return SetFileTime(static_cast<HANDLE>(file.get()), &creation, nullptr, &write);
}

bool set_file_dates(const file_path& path, int64_t created, int64_t modified) {
    if (path.empty())
        return false;
    // Folders take dates too, hence the backup semantics.
    const file_descriptor file(CreateFileW(widen(path.to_string()).c_str(), FILE_WRITE_ATTRIBUTES,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                           OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    return set_file_dates(file, created, modified);
}

} // namespace nimbit
