#pragma once

// The offscreen backend keeps the platform's state process-wide (pointer and keys, clipboard, menu
// and dialog answers, shell calls, the modal driver). Tests start each case from this clean slate.

namespace nimbit::ui::offscreen {

void reset_state();

} // namespace nimbit::ui::offscreen
