#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace nimbit::ui {

// A list of pointers in which removing an entry leaves a null hole, squeezed out before the list is
// next read, so tearing down thousands of entries is linear, not quadratic. Every element remembers
// its index in the member `Slot` (a hint, checked before use), so removing the usual single entry
// needs no scan. While a loop indexes the list (a walk_guard on walks()), holes stay where they are
// and the indices stay valid.
template <typename T, uint32_t T::*Slot> class compacting_list {
public:
    static constexpr size_t npos = static_cast<size_t>(-1);

    // The entries in order, compacted first unless a walk is running.
    const std::vector<T*>& items() const {
        compact();
        return list;
    }
    // The entries as they are, holes included: for loops that index the list under a walk_guard.
    const std::vector<T*>& with_holes() const { return list; }
    uint32_t& walks() { return walk_count; }

    bool contains(const T* item) const { return std::find(list.begin(), list.end(), item) != list.end(); }

    void push_back(T* item) {
        compact();
        item->*Slot = static_cast<uint32_t>(list.size());
        list.push_back(item);
    }

    // Leaves holes for up to `occurrences` entries of `item` (the slot hint first, then a scan) and
    // returns how many went.
    uint32_t remove(const T* item, uint32_t occurrences = 1) {
        uint32_t removed = 0;
        const uint32_t slot = item->*Slot;
        if (slot < list.size() && list[slot] == item) {
            list[slot] = nullptr;
            ++removed;
        }
        for (size_t i = 0; i < list.size() && removed < occurrences; ++i)
            if (list[i] == item) {
                list[i] = nullptr;
                ++removed;
            }
        holes += removed;
        if (holes > 32 && holes * 2 > list.size())
            compact();
        return removed;
    }

    // Leaves a hole at index i (under a walk) and returns what was there.
    T* take(size_t i) {
        T* item = list[i];
        if (item) {
            list[i] = nullptr;
            ++holes;
        }
        return item;
    }

    void clear() {
        list.clear();
        holes = 0;
    }

    // The index of `item` in items(), or npos.
    size_t index_of(const T* item) const {
        compact();
        const uint32_t slot = item->*Slot;
        if (slot < list.size() && list[slot] == item)
            return slot;
        const auto it = std::find(list.begin(), list.end(), item);
        return it == list.end() ? npos : static_cast<size_t>(it - list.begin());
    }

    // Moves `item` to the end (to_end) or the start of the list.
    void move(const T* item, bool to_end) {
        compact();
        const auto it = std::find(list.begin(), list.end(), item);
        if (it == list.end())
            return;
        if (to_end)
            std::rotate(it, it + 1, list.end());
        else
            std::rotate(list.begin(), it, it + 1);
        for (size_t i = 0; i < list.size(); ++i)
            if (list[i])
                list[i]->*Slot = static_cast<uint32_t>(i);
    }

    void compact() const {
        if (holes == 0 || walk_count > 0)
            return;
        size_t out = 0;
        for (T* item : list)
            if (item) {
                item->*Slot = static_cast<uint32_t>(out);
                list[out++] = item;
            }
        list.resize(out);
        holes = 0;
    }

private:
    mutable std::vector<T*> list;
    mutable uint32_t holes = 0;
    uint32_t walk_count = 0;
};

} // namespace nimbit::ui
