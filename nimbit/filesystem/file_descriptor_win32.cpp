#include "nimbit/filesystem/file_descriptor.h"

#include "nimbit/utils/wide_string_win32.h"

#include <algorithm>
#include <vector>

#include <windows.h>

namespace nimbit {

namespace {

constexpr DWORD share_all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE h(const file_descriptor& file) {
    return static_cast<HANDLE>(file.get());
}

OVERLAPPED at(uint64_t pos) {
    OVERLAPPED o{};
    o.Offset = static_cast<DWORD>(pos);
    o.OffsetHigh = static_cast<DWORD>(pos >> 32);
    return o;
}

file_descriptor open_w(const file_path& path, DWORD access, DWORD share, DWORD disposition, DWORD flags) {
    if (path.empty())
        return file_descriptor();
    return file_descriptor(
        CreateFileW(widen(path.to_string()).c_str(), access, share, nullptr, disposition, flags, nullptr));
}

bool is_link(DWORD attributes) {
    return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// Removes one entry found in a folder being deleted. A reparse point (a symbolic link or a
// junction) is removed as itself, never entered.
bool remove_entry(const std::wstring& path, DWORD attributes);

// Deletes everything in the folder. Entries come with their attributes, so links are recognised
// before anything is opened; a folder is entered only through a handle that refuses to follow a
// reparse point and that keeps the folder from being renamed or replaced while it is emptied.
void remove_contents(const std::wstring& folder) {
    WIN32_FIND_DATAW found;
    HANDLE find = FindFirstFileExW((folder + L"\\*").c_str(), FindExInfoBasic, &found, FindExSearchNameMatch,
                                   nullptr, 0);
    if (find == INVALID_HANDLE_VALUE)
        return;
    std::vector<std::pair<std::wstring, DWORD>> entries;
    do {
        const std::wstring_view name = found.cFileName;
        if (name != L"." && name != L"..")
            entries.emplace_back(folder + L"\\" + found.cFileName, found.dwFileAttributes);
    } while (FindNextFileW(find, &found));
    FindClose(find);
    for (const auto& [path, attributes] : entries)
        remove_entry(path, attributes);
}

bool remove_entry(const std::wstring& path, DWORD attributes) {
    if (attributes & FILE_ATTRIBUTE_READONLY)
        SetFileAttributesW(path.c_str(), attributes & ~DWORD(FILE_ATTRIBUTE_READONLY));
    if (is_link(attributes) || !(attributes & FILE_ATTRIBUTE_DIRECTORY))
        return (attributes & FILE_ATTRIBUTE_DIRECTORY) ? RemoveDirectoryW(path.c_str())
                                                       : DeleteFileW(path.c_str());
    {
        // Held without FILE_SHARE_DELETE while emptying: the folder cannot be swapped for a link.
        file_descriptor held(CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                         FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
        BY_HANDLE_FILE_INFORMATION info;
        if (!held || !GetFileInformationByHandle(h(held), &info))
            return false;
        if (is_link(info.dwFileAttributes) || !(info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
            return false;
        remove_contents(path);
    }
    return RemoveDirectoryW(path.c_str());
}

// A handle's final path, without the "\\?\" prefix the system puts before it.
std::wstring final_path(HANDLE file) {
    std::wstring buffer(MAX_PATH, L'\0');
    DWORD n = GetFinalPathNameByHandleW(file, buffer.data(), static_cast<DWORD>(buffer.size()), 0);
    if (n >= buffer.size()) {
        buffer.resize(n + 1);
        n = GetFinalPathNameByHandleW(file, buffer.data(), static_cast<DWORD>(buffer.size()), 0);
    }
    if (n == 0 || n >= buffer.size())
        return {};
    buffer.resize(n);
    if (buffer.rfind(L"\\\\?\\UNC\\", 0) == 0)
        buffer = L"\\" + buffer.substr(7);
    else if (buffer.rfind(L"\\\\?\\", 0) == 0)
        buffer.erase(0, 4);
    return buffer;
}

} // namespace

bool file_descriptor::close() {
    const bool ok = !*this || CloseHandle(static_cast<HANDLE>(handle));
    handle = invalid();
    return ok;
}

bool describe(const file_descriptor& file, file_facts& out) {
    BY_HANDLE_FILE_INFORMATION info;
    if (!file || !GetFileInformationByHandle(h(file), &info))
        return false;
    // Pipes and devices answer too, but are no disk files.
    const bool disk = GetFileType(h(file)) == FILE_TYPE_DISK;
    out.type = !disk ? 2 : (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) ? 1 : 0;
    out.size = uint64_t(info.nFileSizeHigh) << 32 | info.nFileSizeLow;
    out.links = info.nNumberOfLinks;
    out.device = info.dwVolumeSerialNumber;
    out.inode = uint64_t(info.nFileIndexHigh) << 32 | info.nFileIndexLow;
    return true;
}

file_descriptor open_for_reading(const file_path& path) {
    return open_w(path, GENERIC_READ, share_all, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
}

file_descriptor open_for_writing(const file_path& path) {
    return open_w(path, GENERIC_READ | GENERIC_WRITE, share_all, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL);
}

file_descriptor create_new_file(const file_path& path, bool& exists) {
    file_descriptor file = open_w(path, GENERIC_WRITE, share_all, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
    const DWORD error = GetLastError();
    exists = !file && (error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS);
    return file;
}

file_descriptor open_regular_file(const file_path& path, bool writable, unsigned) {
    const DWORD access = writable ? GENERIC_READ | GENERIC_WRITE : GENERIC_READ;
    file_descriptor file =
        open_w(path, access, share_all, writable ? OPEN_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
    file_facts facts;
    if (file && (!describe(file, facts) || facts.type != 0))
        return file_descriptor();
    return file;
}

int64_t read_up_to(const file_descriptor& file, uint64_t pos, void* out, size_t n) {
    auto* p = static_cast<unsigned char*>(out);
    size_t done = 0;
    while (done < n) {
        OVERLAPPED o = at(pos + done);
        const DWORD want = static_cast<DWORD>(std::min<size_t>(n - done, 1u << 30));
        DWORD got = 0;
        if (!ReadFile(h(file), p + done, want, &got, &o))
            return GetLastError() == ERROR_HANDLE_EOF ? static_cast<int64_t>(done) : -1;
        if (got == 0)
            break;
        done += got;
    }
    return static_cast<int64_t>(done);
}

bool write_all(const file_descriptor& file, const void* data, size_t size) {
    const char* p = static_cast<const char*>(data);
    while (size > 0) {
        const DWORD want = static_cast<DWORD>(std::min<size_t>(size, 1u << 30));
        DWORD written = 0;
        if (!WriteFile(h(file), p, want, &written, nullptr) || written == 0)
            return false;
        p += written;
        size -= written;
    }
    return true;
}

bool write_at(const file_descriptor& file, uint64_t pos, const void* data, size_t size) {
    const char* p = static_cast<const char*>(data);
    while (size > 0) {
        OVERLAPPED o = at(pos);
        const DWORD want = static_cast<DWORD>(std::min<size_t>(size, 1u << 30));
        DWORD written = 0;
        if (!WriteFile(h(file), p, want, &written, &o) || written == 0)
            return false;
        p += written;
        pos += written;
        size -= written;
    }
    return true;
}

bool sync_file(const file_descriptor& file) {
    return FlushFileBuffers(h(file));
}

bool set_file_length(const file_descriptor& file, uint64_t length) {
    FILE_END_OF_FILE_INFO info{};
    info.EndOfFile.QuadPart = static_cast<LONGLONG>(length);
    return length <= uint64_t(INT64_MAX) &&
           SetFileInformationByHandle(h(file), FileEndOfFileInfo, &info, sizeof info);
}

// Windows allocates the blocks when the length is set; there is nothing more to promise.
bool reserve_space(const file_descriptor&, uint64_t, uint64_t) {
    return true;
}

// Access on Windows comes from the folder's ACL, which a new file inherits; there are no mode bits.
void copy_permissions(const file_path&, const file_descriptor&) {}
void set_permissions(const file_descriptor&, unsigned) {}

// LockFileEx locks belong to the handle, as flock's do to the open file. The byte locked lies far
// past any data, so that reads and writes of the file itself are never refused by the lock.
bool lock_file(const file_descriptor& file, bool shared) {
    OVERLAPPED o = at(uint64_t(1) << 62);
    return LockFileEx(h(file), shared ? 0 : LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &o);
}

void unlock_file(const file_descriptor& file) {
    OVERLAPPED o = at(uint64_t(1) << 62);
    UnlockFileEx(h(file), 0, 1, 0, &o);
}

unsigned char* map_view(const file_descriptor& file, uint64_t start, uint64_t size, bool writable) {
    // The mapping object sizes itself to the file; the view keeps it alive after its handle closes.
    const file_descriptor mapping(
        CreateFileMappingW(h(file), nullptr, writable ? PAGE_READWRITE : PAGE_READONLY, 0, 0, nullptr));
    if (!mapping || size > SIZE_MAX)
        return nullptr;
    void* view =
        MapViewOfFile(static_cast<HANDLE>(mapping.get()), writable ? FILE_MAP_WRITE : FILE_MAP_READ,
                      static_cast<DWORD>(start >> 32), static_cast<DWORD>(start), static_cast<SIZE_T>(size));
    return static_cast<unsigned char*>(view);
}

void unmap_view(unsigned char* view, uint64_t) {
    UnmapViewOfFile(view);
}

// Views start at multiples of the allocation granularity (64 KiB), not of the page size.
uint64_t map_granularity() {
    static const uint64_t granularity = [] {
        SYSTEM_INFO info;
        GetSystemInfo(&info);
        return info.dwAllocationGranularity ? uint64_t{info.dwAllocationGranularity} : uint64_t{65536};
    }();
    return granularity;
}

bool replace_file(const file_path& from, const file_path& to) {
    return MoveFileExW(widen(from.to_string()).c_str(), widen(to.to_string()).c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
}

bool delete_file(const file_path& path) {
    return !path.empty() && DeleteFileW(widen(path.to_string()).c_str());
}

make_result make_one_folder(const file_path& path) {
    if (CreateDirectoryW(widen(path.to_string()).c_str(), nullptr))
        return make_result::made;
    const DWORD error = GetLastError();
    if (error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS || error == ERROR_ACCESS_DENIED) {
        // A drive's root answers "access denied" rather than "exists".
        if (GetFileAttributesW(widen(path.to_string()).c_str()) != INVALID_FILE_ATTRIBUTES)
            return make_result::exists;
    }
    return error == ERROR_PATH_NOT_FOUND ? make_result::no_parent : make_result::failed;
}

bool remove_tree(const file_path& path) {
    std::wstring name = widen(path.to_string());
    while (name.size() > 1 && (name.back() == L'/' || name.back() == L'\\'))
        name.pop_back();
    if (name.empty())
        return false;
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return false;
    // A file given as the folder is left alone; a link given as the folder is removed itself.
    if (!is_link(attributes) && !(attributes & FILE_ATTRIBUTE_DIRECTORY))
        return false;
    if (is_link(attributes) && !(attributes & FILE_ATTRIBUTE_DIRECTORY))
        return DeleteFileW(name.c_str());
    return remove_entry(name, attributes);
}

std::string real_path(const file_path& path) {
    const file_descriptor file = open_w(path, 0, share_all, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    return file ? file_path(narrow(final_path(h(file)))).fix_separator().to_string() : std::string();
}

unsigned long process_id() {
    return GetCurrentProcessId();
}

bool open_root_folder(const file_path& path, held_folder& out) {
    out.handle = open_w(path, FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING,
                        FILE_FLAG_BACKUP_SEMANTICS);
    out.path = path;
    file_facts facts;
    return describe(out.handle, facts) && facts.type == 1;
}

bool open_child_folder(const held_folder& parent, const std::string& name, bool create, held_folder& out) {
    out.path = parent.path.append(file_path(name));
    if (!name_is_portable(name))
        return false;
    const std::wstring wide = widen(out.path.to_string());
    // No FILE_SHARE_DELETE: while held, the folder cannot be renamed away and replaced by a link.
    auto open = [&] {
        return file_descriptor(
            CreateFileW(wide.c_str(), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                        OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    };
    out.handle = open();
    if (!out.handle && create &&
        (CreateDirectoryW(wide.c_str(), nullptr) || GetLastError() == ERROR_ALREADY_EXISTS))
        out.handle = open();
    BY_HANDLE_FILE_INFORMATION info;
    if (!out.handle || !GetFileInformationByHandle(h(out.handle), &info) || is_link(info.dwFileAttributes) ||
        !(info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) {
        out.handle.close();
        return false;
    }
    return true;
}

file_descriptor create_plain_file(const held_folder& folder, const std::string& name) {
    if (!name_is_portable(name))
        return file_descriptor();
    const std::wstring wide = widen(folder.path.append(file_path(name)).to_string());
    file_descriptor file(CreateFileW(wide.c_str(), GENERIC_WRITE | FILE_READ_ATTRIBUTES, FILE_SHARE_READ,
                                     nullptr, OPEN_ALWAYS, FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    BY_HANDLE_FILE_INFORMATION info;
    if (!file || GetFileType(h(file)) != FILE_TYPE_DISK || !GetFileInformationByHandle(h(file), &info) ||
        is_link(info.dwFileAttributes) || (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) ||
        info.nNumberOfLinks > 1 || !set_file_length(file, 0))
        return file_descriptor();
    return file;
}

bool name_is_portable(const std::string& name) {
    if (name.empty() || name.back() == '.' || name.back() == ' ')
        return false; // the system would drop the trailing dots and spaces and open another name
    for (const char c : name)
        if (static_cast<unsigned char>(c) < 32 ||
            std::string_view("\\/:*?\"<>|").find(c) != std::string_view::npos)
            return false;
    // Device names stay devices whatever the folder or extension: "nul.txt" is the null device.
    std::string base = name.substr(0, name.find('.'));
    while (!base.empty() && base.back() == ' ')
        base.pop_back();
    for (char& c : base)
        c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
    static constexpr std::string_view devices[] = {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
    if (std::find(std::begin(devices), std::end(devices), base) != std::end(devices))
        return false;
    return !(base.size() == 4 && (base.rfind("COM", 0) == 0 || base.rfind("LPT", 0) == 0) && base[3] >= '0' &&
             base[3] <= '9');
}

} // namespace nimbit
