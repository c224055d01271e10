#pragma once

// What the simulated host's suite functions share: the refusal of a handle that names nothing, and
// the release of an object the plug-in was handed.

#include "host/sdk/ae_basic.h"

namespace hostsim {

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
