// The simulated host on the Mac and Linux: the plug-in loaded with dlopen, its installation
// simulated below the session's root, and no window of its own (the plug-in reaches the main menu
// through the native application table, sim_native_application_posix.cpp).

#include "hostsim/sim_host.h"
#include "hostsim/sim_platform.h"

#include <dlfcn.h>
#include <stdlib.h>

namespace hostsim {

namespace platform {

void* OpenLibrary(const std::string& path, std::string& error) {
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* why = dlerror();
        error = why != nullptr ? why : "cannot load " + path;
    }
    return library;
}

void* LibrarySymbol(void* library, const char* name) {
    return dlsym(library, name);
}

void CloseLibrary(void* library) {
    dlclose(library);
}

void SetEnvironment(const char* name, const std::string& value) {
    setenv(name, value.c_str(), 1);
}

std::string HostExecutable(const Model& model, const std::string& root) {
    return root + "/" + model.installFolder + "/" + model.bundle + "/Contents/MacOS/" + model.executable;
}

std::string HostPresetsFolder(const std::string&, const Model& model, const std::string& root) {
    return root + "/" + model.installFolder + "/Presets";
}

void* CreateMainWindow(SimHost&) {
    return nullptr;
}

void DestroyMainWindow(void*) {}

void SetMainWindowMenu(void*, const MenuItem&) {}

void SetMainWindowActive(void*, bool) {}

} // namespace platform

std::string NewTemporaryFolder(const std::string& prefix) {
    std::string pattern = "/tmp/" + prefix + "-XXXXXX";
    return mkdtemp(pattern.data()) != nullptr ? pattern : std::string();
}

std::vector<std::string> CommandLineArguments(int argc, char** argv) {
    return std::vector<std::string>(argv, argv + argc);
}

} // namespace hostsim
