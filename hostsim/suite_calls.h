#pragma once

// What the simulated host's suite functions share: the current host, the records behind handles,
// host name buffers, memory blocks, the refusal of a handle that names nothing, and the release of
// an object the plug-in was handed.

#include "host/sdk/ae_basic.h"
#include "host/sdk/ae_suites.h"
#include "hostsim/sim_host.h"

#include <cstddef>
#include <string>
#include <vector>

namespace hostsim {

// The host the suites answer for: they are only reachable while a host is current.
inline SimHost& Host() {
    return *SimHost::Current();
}

// Handles are the addresses of the model's records; null when a handle names none.
Project* ProjectOf(AEGP_ProjectH handle);
Item* ItemOf(const void* handle);
Layer* LayerOf(AEGP_LayerH handle);

// Copies text into a host name buffer of size bytes, cut to fit and terminated.
void CopyName(const std::string& text, char* buffer, size_t size);

// What a memory handle names; NewMem hands out a cleared one and counts it live.
struct MemBlock {
    std::vector<char> bytes;
};
AEGP_MemHandle NewMem(size_t size);

// Answers a call about the record a handle names: fill reads the record into the caller's
// out-parameters. A handle that names nothing is refused and leaves them untouched.
template <typename Record, typename Fill> A_Err Answer(Record* record, Fill fill) {
    if (record == nullptr)
        return A_Err_PARAMETER;
    fill(*record);
    return A_Err_NONE;
}

// Frees the Object behind a handle the plug-in gives back and counts it out of live; a null handle
// is refused.
template <typename Object, typename Handle> A_Err Dispose(Handle handle, int& live) {
    if (handle == nullptr)
        return A_Err_PARAMETER;
    delete reinterpret_cast<Object*>(handle);
    --live;
    return A_Err_NONE;
}

} // namespace hostsim
