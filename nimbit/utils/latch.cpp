#include "nimbit/utils/latch.h"

#include "nimbit/utils/assert.h"

namespace nimbit {

void latch::reset(uint32_t n) {
    std::lock_guard lock(mutex);
    NIMBIT_ASSERT(count == 0);
    count = n;
}

void latch::count_down() {
    bool reached_zero;
    {
        std::lock_guard lock(mutex);
        NIMBIT_ASSERT(count > 0);
        reached_zero = --count == 0;
    }
    if (reached_zero)
        zero.notify_all();
}

void latch::wait() {
    std::unique_lock lock(mutex);
    zero.wait(lock, [this] { return count == 0; });
}

} // namespace nimbit
