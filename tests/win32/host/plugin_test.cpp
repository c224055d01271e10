// The built Quillo.aex as a Windows host finds it: the six exports and nothing else, and the PiPL
// resource naming the x64 entry point.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <set>
#include <string>

namespace {

std::wstring PluginPath() {
    wchar_t self[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    std::wstring path(self);
    path.resize(path.find_last_of(L"\\/") + 1);
    for (const char c : std::string(QUILLO_PLUGIN_RELATIVE))
        path += c == '/' ? L'\\' : static_cast<wchar_t>(c);
    return path;
}

// The names in the loaded module's export directory.
std::set<std::string> ExportedNames(HMODULE module) {
    const auto* base = reinterpret_cast<const BYTE*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& entry = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    std::set<std::string> names;
    if (entry.VirtualAddress == 0)
        return names;
    const auto* exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(base + entry.VirtualAddress);
    const auto* nameOffsets = reinterpret_cast<const DWORD*>(base + exports->AddressOfNames);
    for (DWORD i = 0; i < exports->NumberOfNames; ++i)
        names.insert(reinterpret_cast<const char*>(base + nameOffsets[i]));
    EXPECT_EQ(exports->NumberOfFunctions, exports->NumberOfNames); // none by ordinal only
    return names;
}

// The symbol of the PiPL's x64 entry point property ("8664"); empty when the resource lacks it.
// Layout: a 16-bit 1, then a 32-bit 0 and count, then per property vendor, key (four-character codes
// stored little-endian, so "8BIM" reads "MIB8"), a 32-bit 0, the padded length and the data.
std::string EntryPointOf(const BYTE* data, DWORD size) {
    if (size < 10 || data[0] != 1 || data[1] != 0)
        return std::string();
    uint32_t count = 0;
    std::memcpy(&count, data + 6, 4);
    size_t at = 10;
    for (uint32_t i = 0; i < count && at + 16 <= size; ++i) {
        uint32_t length = 0;
        std::memcpy(&length, data + at + 12, 4);
        if (at + 16 + length > size)
            break;
        if (std::memcmp(data + at, "MIB84668", 8) == 0)
            return std::string(reinterpret_cast<const char*>(data + at + 16),
                               strnlen(reinterpret_cast<const char*>(data + at + 16), length));
        at += 16 + length;
    }
    return std::string();
}

TEST(Win32Plugin, ExportsTheEntryPointsOnlyAndCarriesItsPiPL) {
    const HMODULE plugin = LoadLibraryW(PluginPath().c_str());
    ASSERT_NE(plugin, nullptr) << "error " << GetLastError();
    EXPECT_EQ(ExportedNames(plugin), (std::set<std::string>{"ESFreeMem", "ESGetVersion", "ESInitialize",
                                                            "ESTerminate", "PluginMain", "execute"}));

    const HRSRC resource = FindResourceW(plugin, MAKEINTRESOURCEW(16000), L"PiPL");
    ASSERT_NE(resource, nullptr);
    const auto* data = static_cast<const BYTE*>(LockResource(LoadResource(plugin, resource)));
    ASSERT_NE(data, nullptr);
    const std::string entry = EntryPointOf(data, SizeofResource(plugin, resource));
    EXPECT_EQ(entry, "PluginMain");
    EXPECT_NE(GetProcAddress(plugin, entry.c_str()), nullptr);
    FreeLibrary(plugin);
}

} // namespace
