#pragma once

// Typed views of event_info::data, the one 64-bit payload word of every event: what each event
// type carries is listed in event_type.h. Writers and readers go through these so that the packing
// is written once.

#include "nimbit/graphics/vec.h"

#include <bit>
#include <cstdint>

namespace nimbit::ui {

// Two 32-bit values: a in the low half, b in the high half.
constexpr uint64_t pack_pair(int32_t a, int32_t b) {
    return static_cast<uint64_t>(static_cast<uint32_t>(a)) |
           (static_cast<uint64_t>(static_cast<uint32_t>(b)) << 32);
}
constexpr uint32_t pair_low(uint64_t data) {
    return static_cast<uint32_t>(data);
}
constexpr uint32_t pair_high(uint64_t data) {
    return static_cast<uint32_t>(data >> 32);
}

// A size or position (resize, move and their parent_ forms): x or w low, y or h high.
constexpr uint64_t pack_size(ivec2 size) {
    return pack_pair(size.x, size.y);
}
constexpr ivec2 unpack_size(uint64_t data) {
    return {static_cast<int32_t>(pair_low(data)), static_cast<int32_t>(pair_high(data))};
}

// The wheel delta of mouse_wheel, the bits of a double.
inline uint64_t pack_wheel(double delta) {
    return std::bit_cast<uint64_t>(delta);
}
inline double wheel_delta(uint64_t data) {
    return std::bit_cast<double>(data);
}

// An address (child_added, theme_changed, application events): pointer_payload<T> reads it back as
// the type its writer stored.
inline uint64_t pack_pointer(const void* p) {
    return reinterpret_cast<uintptr_t>(p);
}
template <typename T> T* pointer_payload(uint64_t data) {
    return reinterpret_cast<T*>(static_cast<uintptr_t>(data));
}

} // namespace nimbit::ui
