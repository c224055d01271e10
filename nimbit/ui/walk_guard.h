#pragma once

#include <cstdint>

namespace nimbit::ui {

// Keeps a widget's walk count raised while a loop indexes its children, even if a callback throws:
// the list is not compacted under the loop, so the indices stay valid.
class walk_guard {
public:
    explicit walk_guard(uint32_t& count) : walks(count) { ++walks; }
    ~walk_guard() { --walks; }
    walk_guard(const walk_guard&) = delete;
    walk_guard& operator=(const walk_guard&) = delete;

private:
    uint32_t& walks;
};

} // namespace nimbit::ui
