#pragma once

namespace nimbit {

// Base of objects that own identity (windows, widgets, caches): no copies, no moves.
struct non_copyable_non_moveable {
    non_copyable_non_moveable() = default;
    non_copyable_non_moveable(const non_copyable_non_moveable&) = delete;
    non_copyable_non_moveable& operator=(const non_copyable_non_moveable&) = delete;
};

} // namespace nimbit
