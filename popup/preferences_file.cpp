#include "popup/preferences_file.h"

#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/filesystem/write_file_atomic.h"
#include "nimbit/utils/chunk_file.h"
#include "popup/preferences_data.h"
#include "popup/search_data_files.h"

#include <cctype>
#include <cstring>

namespace {

enum SettingsChunk : unsigned {
    ThemeChunk = 1,
    ShortcutChoiceChunk = 2,
    CaptureFolderChunk = 3,
    FullResolutionChunk = 4,
    NewsTimeChunk = 5,
    // 6 is retired.
    CustomKeyNameChunk = 7,
    CustomKeyCodeChunk = 8,
    CustomCtrlChunk = 9,
    CustomOptChunk = 10,
    CustomShiftChunk = 11,
    CustomCmdChunk = 12,
    RecentFirstChunk = 13,
    IgnoreAccentsChunk = 14,
};

// The chunk file's magic, and each chunk's identifier and size.
constexpr uint64_t SettingsHeaderSize = 8;
constexpr uint64_t ChunkHeaderSize = 8;

// The same routine fills a measuring pass and the writing pass, so both see identical chunks.
void WriteFields(nimbit::chunk_file& file, const PreferencesData& prefs) {
    int theme = static_cast<int>(prefs.theme);
    int shortcutChoice = prefs.shortcutChoice;
    bool fullResolution = prefs.fullResolutionScreenshots, recentFirst = prefs.recentFirst;
    bool ignoreAccents = prefs.ignoreAccents;
    long long newsTime = prefs.newsTime;
    int keyCode = prefs.customKeyCode;
    int ctrl = prefs.customCtrl, opt = prefs.customOpt, shift = prefs.customShift, cmd = prefs.customCmd;
    file.chunk(ThemeChunk, theme);
    file.chunk(ShortcutChoiceChunk, shortcutChoice);
    file.chunk(CaptureFolderChunk, std::string(prefs.captureFolder));
    file.chunk(FullResolutionChunk, fullResolution);
    file.chunk(NewsTimeChunk, newsTime);
    file.chunk(CustomKeyNameChunk, std::string(prefs.customKeyName));
    file.chunk(CustomKeyCodeChunk, keyCode);
    file.chunk(CustomCtrlChunk, ctrl);
    file.chunk(CustomOptChunk, opt);
    file.chunk(CustomShiftChunk, shift);
    file.chunk(CustomCmdChunk, cmd);
    file.chunk(RecentFirstChunk, recentFirst);
    file.chunk(IgnoreAccentsChunk, ignoreAccents);
}

// Little-endian, whatever the machine: the file's byte order is fixed.
uint64_t ReadLittleEndian(const unsigned char* data, size_t size) {
    uint64_t value = 0;
    for (size_t i = size; i-- > 0;)
        value = (value << 8) | data[i];
    return value;
}

bool ReadInt(const nimbit::chunk_file& file, int32_t& field) {
    if (file.chunk_size() != 4)
        return false;
    field = static_cast<int32_t>(static_cast<uint32_t>(ReadLittleEndian(file.chunk_data(), 4)));
    return true;
}

std::string ReadString(const nimbit::chunk_file& file) {
    const size_t size = file.chunk_size();
    if (size == 0)
        return {};
    const char* text = reinterpret_cast<const char*>(file.chunk_data());
    const void* zero = std::memchr(text, 0, size);
    return std::string(text, zero ? static_cast<const char*>(zero) - text : size);
}

// "/..." everywhere; on Windows also a drive's "X:/..." (either slash) and a share's "\\server\...",
// which is how the shell's folders are spelled there.
bool IsAbsolutePath(const std::string& path) {
    if (!path.empty() && path[0] == '/')
        return true;
#ifdef _WIN32
    const auto slash = [](char c) {
        return c == '/' || c == '\\';
    };
    const bool drive = path.size() >= 3 && std::isalpha(static_cast<unsigned char>(path[0])) &&
                       path[1] == ':' && slash(path[2]);
    return drive || (path.size() >= 3 && slash(path[0]) && slash(path[1]));
#else
    return false;
#endif
}

bool IsAcceptableCaptureFolder(const std::string& folder) {
    return IsAbsolutePath(folder) && nimbit::file_stats(nimbit::file_path(folder)).type == 1;
}

} // namespace

std::vector<unsigned char> EncodePreferences(const PreferencesData& prefs) {
    nimbit::chunk_file measure(nullptr, 0, nimbit::chunk_file_access::measure);
    WriteFields(measure, prefs);
    std::vector<unsigned char> bytes(measure.file_size());
    nimbit::chunk_file writer(bytes.data(), bytes.size(), nimbit::chunk_file_access::write);
    WriteFields(writer, prefs);
    return bytes;
}

namespace {

bool ReadFields(nimbit::chunk_file& file, PreferencesData& prefs, PreferencesReadReport& report) {
    if (!file.is_valid())
        return false;
    // The chunks read must account for the whole file; the reader stops silently at one that runs
    // past the end.
    uint64_t covered = SettingsHeaderSize;
    while (const uint32_t id = file.next_chunk()) {
        covered += ChunkHeaderSize + file.chunk_size();
        bool sized = true; // false: a fixed-size field's chunk has another size, and is not taken
        switch (id) {
        case ThemeChunk: {
            int32_t value = 0;
            if ((sized = ReadInt(file, value)))
                prefs.theme = static_cast<UIColorTheme>(value);
            break;
        }
        case ShortcutChoiceChunk:
            sized = ReadInt(file, prefs.shortcutChoice);
            break;
        case CaptureFolderChunk:
            if (std::string folder = ReadString(file); IsAcceptableCaptureFolder(folder))
                prefs.captureFolder = std::move(folder);
            else
                report.captureFolderRejected = true;
            break;
        case FullResolutionChunk:
            if ((sized = file.chunk_size() == 1))
                prefs.fullResolutionScreenshots = file.chunk_data()[0] != 0;
            break;
        case RecentFirstChunk:
            if ((sized = file.chunk_size() == 1))
                prefs.recentFirst = file.chunk_data()[0] != 0;
            break;
        case IgnoreAccentsChunk:
            if ((sized = file.chunk_size() == 1))
                prefs.ignoreAccents = file.chunk_data()[0] != 0;
            break;
        case NewsTimeChunk:
            if ((sized = file.chunk_size() == 8))
                prefs.newsTime = static_cast<int64_t>(ReadLittleEndian(file.chunk_data(), 8));
            break;
        case CustomKeyNameChunk:
            prefs.customKeyName = ReadString(file);
            break;
        case CustomKeyCodeChunk:
            sized = ReadInt(file, prefs.customKeyCode);
            break;
        case CustomCtrlChunk:
            sized = ReadInt(file, prefs.customCtrl);
            break;
        case CustomOptChunk:
            sized = ReadInt(file, prefs.customOpt);
            break;
        case CustomShiftChunk:
            sized = ReadInt(file, prefs.customShift);
            break;
        case CustomCmdChunk:
            sized = ReadInt(file, prefs.customCmd);
            break;
        default: // 6 and anything unknown
            break;
        }
        report.damaged = report.damaged || !sized;
    }
    if (covered != file.file_size())
        report.damaged = true;
    return true;
}

} // namespace

bool DecodePreferences(const unsigned char* data, size_t size, PreferencesData& prefs,
                       PreferencesReadReport& report) {
    nimbit::chunk_file file(data, size);
    return ReadFields(file, prefs, report);
}

bool DecodePreferences(const unsigned char* data, size_t size, PreferencesData& prefs) {
    PreferencesReadReport ignored;
    return DecodePreferences(data, size, prefs, ignored);
}

bool LoadPreferences(PreferencesData& prefs, const nimbit::file_path& folder, PreferencesReadReport& report) {
    if (folder.empty())
        return false;
    nimbit::chunk_file file(folder.append(SettingsFileName), nimbit::chunk_file_access::read);
    return ReadFields(file, prefs, report);
}

bool LoadPreferences(PreferencesData& prefs, const nimbit::file_path& folder) {
    PreferencesReadReport ignored;
    return LoadPreferences(prefs, folder, ignored);
}

bool SettingsFileExists(const nimbit::file_path& folder) {
    return !folder.empty() && nimbit::file_stats(folder.append(SettingsFileName)).exists;
}

bool SavePreferences(const PreferencesData& prefs, const std::vector<EffectAlias>& blacklist,
                     const std::vector<EffectAlias>& aliases, const std::vector<EffectAlias>& shortcuts,
                     const nimbit::file_path& folder, bool writeLists) {
    if (folder.empty())
        return false;
    // On a first run the user's folder may not exist yet.
    nimbit::make_dir(folder);
    const std::vector<unsigned char> bytes = EncodePreferences(prefs);
    bool saved = nimbit::write_file_atomic(folder.append(SettingsFileName), bytes.data(), bytes.size());
    if (!prefs.captureFolder.empty())
        saved = nimbit::make_dir(nimbit::file_path(prefs.captureFolder)) && saved;
    if (writeLists)
        saved = WriteSearchDataFiles(blacklist, aliases, shortcuts, folder) && saved;
    return saved;
}
