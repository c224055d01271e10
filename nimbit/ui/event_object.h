#pragma once

#include "nimbit/graphics/vec.h"

namespace nimbit::ui {

// Base of everything that raises or receives events. Its destructor drops every callback this object
// registered (as owner) and every callback registered on it (as source), so no callback outlives
// either end.
class event_object : public non_copyable_non_moveable {
public:
    event_object() = default;
    virtual ~event_object();
};

} // namespace nimbit::ui
