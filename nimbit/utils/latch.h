#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace nimbit {

// A reusable count-down barrier: reset to n, n count_down calls, and every waiter wakes.
class latch {
public:
    latch() = default;
    latch(const latch&) = delete;
    latch& operator=(const latch&) = delete;

    // The count must be 0: a latch is re-armed only after its previous round has finished.
    void reset(uint32_t n);
    void count_down();
    void wait();

private:
    uint32_t count = 0;
    std::mutex mutex;
    std::condition_variable zero;
};

} // namespace nimbit
