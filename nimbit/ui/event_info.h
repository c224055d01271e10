#pragma once

#include "nimbit/ui/event_payload.h"
#include "nimbit/ui/event_type.h"

namespace nimbit::ui {

class event_object;

// What every callback receives. `data` depends on `type` (see event_type.h) and is read and written
// through event_payload.h; sizes and positions always carry the old value: read the new one from
// the sender.
struct event_info {
    event_object* sender = nullptr;
    event_type type = event_type::none;
    event_state state = event_state::normal;
    event_agent agent = event_agent::user;
    unsigned long long data = 0;
};

} // namespace nimbit::ui
