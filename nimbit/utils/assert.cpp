#include "nimbit/utils/assert.h"

#include <cstdio>
#include <cstdlib>

namespace nimbit::detail {

void assertion_failed(const char* file, int line, const char* condition) noexcept {
    std::fprintf(stderr, "%s:%d: assertion failed: %s\n", file, line, condition);
    std::fflush(stderr);
    std::abort();
}

} // namespace nimbit::detail
