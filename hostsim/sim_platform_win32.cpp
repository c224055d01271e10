// The simulated host on Windows: the plug-in loaded with LoadLibraryW, and the executable the
// running one, which the build places in its simulated installation (hostsim/CMakeLists.txt).

#include "hostsim/sim_host.h"
#include "hostsim/sim_platform.h"
#include "nimbit/utils/wide_string_win32.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <cstdlib>
#include <string>

namespace hostsim {

namespace {

std::string ForwardSlashes(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

} // namespace

namespace platform {

void* OpenLibrary(const std::string& path, std::string& error) {
    HMODULE library = LoadLibraryW(nimbit::widen(path).c_str());
    if (library == nullptr)
        error = "cannot load " + path + " (error " + std::to_string(GetLastError()) + ")";
    return reinterpret_cast<void*>(library);
}

void* LibrarySymbol(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

void CloseLibrary(void* library) {
    FreeLibrary(static_cast<HMODULE>(library));
}

void SetEnvironment(const char* name, const std::string& value) {
    // Both the C runtime's copy (getenv) and the process's (GetEnvironmentVariableW).
    const std::wstring wideName = nimbit::widen(name), wideValue = nimbit::widen(value);
    _wputenv_s(wideName.c_str(), wideValue.c_str());
    SetEnvironmentVariableW(wideName.c_str(), wideValue.c_str());
}

std::string HostExecutable(const Model&, const std::string&) {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return ForwardSlashes(nimbit::narrow(path));
        }
        path.resize(path.size() * 2);
    }
}

std::string HostPresetsFolder(const std::string& executable, const Model&, const std::string&) {
    return executable.substr(0, executable.rfind('/') + 1) + "Presets";
}

} // namespace platform

std::string NewTemporaryFolder(const std::string& prefix) {
    wchar_t temporary[MAX_PATH + 1] = {};
    if (GetTempPathW(MAX_PATH + 1, temporary) == 0)
        return {};
    const std::string base = ForwardSlashes(nimbit::narrow(temporary)) + prefix + "-" +
                             std::to_string(GetCurrentProcessId()) + "-";
    for (unsigned attempt = GetTickCount(), tries = 0; tries < 100; ++attempt, ++tries) {
        const std::string folder = base + std::to_string(attempt);
        if (CreateDirectoryW(nimbit::widen(folder).c_str(), nullptr))
            return folder;
    }
    return {};
}

std::vector<std::string> CommandLineArguments(int argc, char** argv) {
    int count = 0;
    LPWSTR* wide = CommandLineToArgvW(GetCommandLineW(), &count);
    if (wide == nullptr)
        return std::vector<std::string>(argv, argv + argc);
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i)
        arguments.push_back(nimbit::narrow(wide[i]));
    LocalFree(wide);
    return arguments;
}

} // namespace hostsim
