#pragma once

#include <cstdint>

// The colour themes the windows can be drawn in. Stored in the settings as a 32-bit integer; a value
// outside the list falls back to the first theme where it is used.
enum class UIColorTheme : int32_t { Dark = 0, Light = 1 };
