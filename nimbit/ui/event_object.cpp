#include "nimbit/ui/event_object.h"

#include "nimbit/ui/event_manager.h"

namespace nimbit::ui {

// Destructors are noexcept: anything thrown while unregistering terminates the process.
event_object::~event_object() {
    event_manager::instance().remove_events(this);
}

} // namespace nimbit::ui
