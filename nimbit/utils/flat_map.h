#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>
#include <vector>

namespace nimbit {

// A hash map for small trivially copyable keys (pointers, ids) kept in one flat array: no allocation
// per entry, linear probing, and deletion by shifting later entries back (no tombstones). Inserting
// or erasing moves values, so a pointer or reference into the map is valid only until the next
// change. Clearing keeps the capacity for the next fill.
template <typename K, typename V> class flat_map {
    static_assert(std::is_trivially_copyable_v<K>);

public:
    flat_map() = default;

    size_t size() const { return count; }
    bool empty() const { return count == 0; }

    V* find(const K& key) {
        if (count == 0)
            return nullptr;
        for (size_t i = home(key);; i = (i + 1) & mask()) {
            if (!used[i])
                return nullptr;
            if (slots[i].key == key)
                return &slots[i].value;
        }
    }
    const V* find(const K& key) const { return const_cast<flat_map*>(this)->find(key); }
    bool contains(const K& key) const { return find(key) != nullptr; }

    // The value of `key`, default-constructed when it was absent.
    V& operator[](const K& key) {
        if ((count + 1) * 4 > slots.size() * 3)
            grow();
        size_t i = home(key);
        for (; used[i]; i = (i + 1) & mask())
            if (slots[i].key == key)
                return slots[i].value;
        used[i] = 1;
        slots[i].key = key;
        slots[i].value = V();
        ++count;
        return slots[i].value;
    }

    bool erase(const K& key) {
        if (count == 0)
            return false;
        size_t i = home(key);
        for (;; i = (i + 1) & mask()) {
            if (!used[i])
                return false;
            if (slots[i].key == key)
                break;
        }
        // Shift back every following entry of the probe run that may live in the hole.
        for (size_t j = (i + 1) & mask(); used[j]; j = (j + 1) & mask()) {
            const size_t want = home(slots[j].key);
            const bool movable = i <= j ? (want <= i || want > j) : (want <= i && want > j);
            if (movable) {
                slots[i] = std::move(slots[j]);
                i = j;
            }
        }
        used[i] = 0;
        slots[i].value = V();
        --count;
        return true;
    }

    void clear() {
        if (count == 0)
            return;
        for (size_t i = 0; i < slots.size(); ++i)
            if (used[i]) {
                used[i] = 0;
                slots[i].value = V();
            }
        count = 0;
    }

    // Calls fn(key, value) for every entry; fn must not change the map.
    template <typename F> void for_each(F&& fn) {
        for (size_t i = 0; i < slots.size(); ++i)
            if (used[i])
                fn(slots[i].key, slots[i].value);
    }

private:
    struct slot {
        K key{};
        V value{};
    };

    size_t mask() const { return slots.size() - 1; }
    size_t home(const K& key) const {
        uint64_t bits = 0;
        std::memcpy(&bits, &key, sizeof(K) < sizeof(bits) ? sizeof(K) : sizeof(bits));
        return static_cast<size_t>((bits * 0x9E3779B97F4A7C15ull) >> shift) & mask();
    }

    void grow() {
        std::vector<slot> old_slots = std::move(slots);
        std::vector<unsigned char> old_used = std::move(used);
        const size_t capacity = old_slots.empty() ? 8 : old_slots.size() * 2;
        slots = std::vector<slot>(capacity);
        used.assign(capacity, 0);
        shift = 64;
        for (size_t c = capacity; c > 1; c >>= 1)
            --shift;
        for (size_t i = 0; i < old_slots.size(); ++i)
            if (old_used[i]) {
                size_t j = home(old_slots[i].key);
                while (used[j])
                    j = (j + 1) & mask();
                used[j] = 1;
                slots[j] = std::move(old_slots[i]);
            }
    }

    std::vector<slot> slots;
    std::vector<unsigned char> used;
    size_t count = 0;
    unsigned shift = 64;
};

// A vector of trivially copyable values that holds its first N in place: the lists the toolkit
// keeps per object are mostly one to four entries long.
template <typename T, size_t N> class small_vector {
    static_assert(std::is_trivially_copyable_v<T> && N > 0);

public:
    small_vector() = default;
    small_vector(const small_vector& other) { assign(other.begin(), other.end()); }
    small_vector(small_vector&& other) noexcept { take(other); }
    small_vector& operator=(const small_vector& other) {
        if (this != &other) {
            count = 0;
            assign(other.begin(), other.end());
        }
        return *this;
    }
    small_vector& operator=(small_vector&& other) noexcept {
        if (this != &other) {
            release();
            take(other);
        }
        return *this;
    }
    ~small_vector() { release(); }

    T* begin() { return data(); }
    T* end() { return data() + count; }
    const T* begin() const { return data(); }
    const T* end() const { return data() + count; }
    T* data() { return heap ? heap : inline_items; }
    const T* data() const { return heap ? heap : inline_items; }
    size_t size() const { return count; }
    bool empty() const { return count == 0; }
    T& operator[](size_t i) { return data()[i]; }
    const T& operator[](size_t i) const { return data()[i]; }

    void push_back(const T& v) {
        if (count == capacity)
            reserve(capacity * 2);
        data()[count++] = v;
    }
    void erase(T* at) {
        std::memmove(at, at + 1, static_cast<size_t>(end() - at - 1) * sizeof(T));
        --count;
    }
    // Removes the values for which pred is true, keeping the order of the rest.
    template <typename P> void erase_if(P&& pred) {
        size_t out = 0;
        T* d = data();
        for (size_t i = 0; i < count; ++i)
            if (!pred(d[i]))
                d[out++] = d[i];
        count = out;
    }
    void clear() { count = 0; }
    void reserve(size_t wanted) {
        if (wanted <= capacity)
            return;
        T* grown = new T[wanted];
        std::memcpy(grown, data(), count * sizeof(T));
        delete[] heap;
        heap = grown;
        capacity = wanted;
    }

private:
    void assign(const T* first, const T* last) {
        reserve(static_cast<size_t>(last - first));
        std::memcpy(data(), first, static_cast<size_t>(last - first) * sizeof(T));
        count = static_cast<size_t>(last - first);
    }
    void take(small_vector& other) {
        if (other.heap) {
            heap = other.heap;
            capacity = other.capacity;
            other.heap = nullptr;
            other.capacity = N;
        } else {
            heap = nullptr;
            capacity = N;
            std::memcpy(inline_items, other.inline_items, other.count * sizeof(T));
        }
        count = other.count;
        other.count = 0;
    }
    void release() {
        delete[] heap;
        heap = nullptr;
        capacity = N;
        count = 0;
    }

    T* heap = nullptr;
    size_t count = 0;
    size_t capacity = N;
    T inline_items[N];
};

} // namespace nimbit
