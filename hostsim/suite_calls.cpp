#include "hostsim/suite_calls.h"

#include <algorithm>
#include <cstring>

namespace hostsim {

Project* ProjectOf(AEGP_ProjectH handle) {
    for (auto& project : Host().GetModel().projects) {
        if (reinterpret_cast<AEGP_ProjectH>(project.get()) == handle)
            return project.get();
    }
    return nullptr;
}

Item* ItemOf(const void* handle) {
    return Host().ItemFromHandle(handle);
}

Layer* LayerOf(AEGP_LayerH handle) {
    for (auto& project : Host().GetModel().projects) {
        for (auto& item : project->items) {
            for (auto& layer : item->layers) {
                if (reinterpret_cast<AEGP_LayerH>(layer.get()) == handle)
                    return layer.get();
            }
        }
    }
    return nullptr;
}

void CopyName(const std::string& text, char* buffer, size_t size) {
    if (buffer == nullptr || size == 0)
        return;
    const size_t n = std::min(text.size(), size - 1);
    std::memcpy(buffer, text.data(), n);
    buffer[n] = '\0';
}

AEGP_MemHandle NewMem(size_t size) {
    ++Host().liveMemHandles;
    return reinterpret_cast<AEGP_MemHandle>(new MemBlock{std::vector<char>(size, 0)});
}

} // namespace hostsim
