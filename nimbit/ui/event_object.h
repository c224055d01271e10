#pragma once

#include "nimbit/utils/non_copyable.h"

#include <cstdint>

namespace nimbit::ui {

// Base of everything that raises or receives events. Its destructor drops every callback this object
// registered (as owner) and every callback registered on it (as source), so no callback outlives
// either end.
class event_object : public non_copyable_non_moveable {
public:
    event_object() = default;
    virtual ~event_object();

private:
    friend class event_manager;
    // One bit per event type that has a callback list on this object as source, kept by the event
    // manager: most events are raised on objects nobody listens to, and this answers them without a
    // hash look-up.
    uint64_t listened_types = 0;
};

} // namespace nimbit::ui
