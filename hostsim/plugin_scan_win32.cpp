// Finding plug-ins as the Windows host does: every DLL named *.aex below the Plug-ins folder, its
// PiPL a resource of type "PiPL", id 16000, in the DLL itself.

#include "hostsim/plugin_bundle.h"
#include "nimbit/utils/wide_string_win32.h"

#include <windows.h>

#include <algorithm>
#include <cwctype>
#include <filesystem>
#include <system_error>

namespace hostsim {

namespace {

namespace fs = std::filesystem;

constexpr WORD PiplResourceId = 16000;

bool Fail(std::string& error, std::string why) {
    error = std::move(why);
    return false;
}

// The PiPL's bytes. The DLL is mapped as data only: none of its code runs, DllMain included.
bool ReadPiplResource(const std::string& path, std::string& out, std::string& error) {
    HMODULE module = LoadLibraryExW(nimbit::widen(path).c_str(), nullptr,
                                    LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
    if (module == nullptr)
        return Fail(error, "not a readable DLL (error " + std::to_string(GetLastError()) + ")");
    HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(PiplResourceId), L"PiPL");
    HGLOBAL loaded = resource != nullptr ? LoadResource(module, resource) : nullptr;
    const void* bytes = loaded != nullptr ? LockResource(loaded) : nullptr;
    if (bytes != nullptr)
        out.assign(static_cast<const char*>(bytes), SizeofResource(module, resource));
    FreeLibrary(module);
    return bytes != nullptr || Fail(error, "no PiPL resource");
}

bool IsPluginFile(const fs::path& path) {
    std::wstring extension = path.extension().wstring();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
    return extension == L".aex";
}

} // namespace

bool ReadPluginBundle(const std::string& bundle, PluginBundle& out, std::string& error) {
    std::string pipl;
    if (!ReadPiplResource(bundle, pipl, error) || !ParsePipl(pipl, out.pipl, error) ||
        !CheckPluginPipl(out.pipl, error))
        return false;
    out.bundle = out.code = bundle;
    return true;
}

std::vector<std::string> FindPluginCandidates(const std::string& folder, std::vector<std::string>& skipped) {
    std::vector<std::string> files;
    std::error_code ec;
    for (fs::recursive_directory_iterator
             it(nimbit::widen(folder), fs::directory_options::skip_permission_denied, ec),
         end;
         !ec && it != end; it.increment(ec)) {
        if (IsPluginFile(it->path()) && it->is_regular_file(ec))
            files.push_back(nimbit::narrow(it->path().generic_wstring()));
    }
    if (ec)
        skipped.push_back(folder + ": " + ec.message());
    return files;
}

} // namespace hostsim
