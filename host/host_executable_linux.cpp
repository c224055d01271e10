#include "host/host_platform.h"
#include "host/native_application.h"

#include <unistd.h>

namespace HostPlatform {

// Here the host is simulated: the executable it reports (inside its simulated installation) comes
// first, then the process's own.
std::string ExecutablePath() {
    const NativeApplication* app = FindNativeApplication();
    if (app != nullptr && app->executable_path != nullptr) {
        if (const char* path = app->executable_path())
            return path;
    }
    char buffer[1024] = {};
    const ssize_t length = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    return length > 0 ? std::string(buffer, static_cast<size_t>(length)) : std::string();
}

int PresetsFolderLevels() {
    return 4;
}

void SetMainWindow(void* /*window*/) {}

} // namespace HostPlatform
