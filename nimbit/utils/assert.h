#pragma once

// Programming errors stop the program with the source file and the condition as written, e.g.
//   nimbit/utils/latch.cpp:21: assertion failed: count == 0
// They stay on in release builds: a broken invariant must not run on into the artist's project.

namespace nimbit::detail {
[[noreturn]] void assertion_failed(const char* file, int line, const char* condition) noexcept;
} // namespace nimbit::detail

#define NIMBIT_ASSERT(condition)                                                                             \
    ((condition) ? static_cast<void>(0) : ::nimbit::detail::assertion_failed(__FILE__, __LINE__, #condition))
