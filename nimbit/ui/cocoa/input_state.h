#pragma once

#include "nimbit/graphics/vec.h"

// While a mouse event is being dispatched, the pointer is where that event happened rather than
// where the pointer is by now: the toolkit hit-tests with the pointer position, and the two differ
// when events queue up.

namespace nimbit::ui::cocoa {

void begin_pointer_event(_vec2<int> screen_position);
void end_pointer_event();

} // namespace nimbit::ui::cocoa
