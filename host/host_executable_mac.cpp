#include "host/host_platform.h"

#include <mach-o/dyld.h>

namespace HostPlatform {

std::string ExecutablePath() {
    char buffer[1024] = {};
    uint32_t size = sizeof buffer;
    if (_NSGetExecutablePath(buffer, &size) != 0)
        return std::string();
    return buffer;
}

int PresetsFolderLevels() {
    return 4;
}

void SetMainWindow(void* /*window*/) {}

} // namespace HostPlatform
