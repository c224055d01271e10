#pragma once

// What the simulated host needs of the system it runs on, one file per platform
// (sim_platform_posix.cpp, sim_platform_win32.cpp and sim_main_window_win32.cpp). Paths are UTF-8.

#include "hostsim/sim_model.h"

#include <filesystem>
#include <string>

namespace hostsim {

class SimHost;

// A UTF-8 path for the standard library's files, which on Windows would read a plain string in the
// system's ANSI code page.
inline std::filesystem::path U8Path(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

namespace platform {

// The plug-in's code: loaded, a symbol of it, unloaded. OpenLibrary says why when it fails.
void* OpenLibrary(const std::string& path, std::string& error);
void* LibrarySymbol(void* library, const char* name);
void CloseLibrary(void* library);

void SetEnvironment(const char* name, const std::string& value);

// The host's executable as the plug-in finds it, and the Presets folder of its installation. On the
// Mac and Linux the executable is simulated below root (<install>/<bundle>/Contents/MacOS/<exe>,
// Presets in <install>); on Windows it is the running executable itself, which the build places
// in <install>/Support Files with Presets beside it (hostsim/CMakeLists.txt).
std::string HostExecutable(const Model& model, const std::string& root);
std::string HostPresetsFolder(const std::string& executable, const Model& model, const std::string& root);

// The host's main window, where the plug-in reaches the main menu through a real window (Windows:
// a hidden top-level window whose menu bar is the main menu); null elsewhere.
void* CreateMainWindow(SimHost& host);
void DestroyMainWindow(void* window);
// The menu bar rebuilt from the menu model.
void SetMainWindowMenu(void* window, const MenuItem& menu);
// Brings the window to the foreground, or makes another window the foreground one.
void SetMainWindowActive(void* window, bool active);

} // namespace platform
} // namespace hostsim
