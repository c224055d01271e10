#pragma once

// Key codes, in one place for the toolkit, its backends and the host side. Only constants, so that
// code which does not link the toolkit (the host's shortcut chord) can name keys too.

#include <cstdint>

namespace nimbit::ui {

// Keys for keyboard::is_key_down: the negative names of modifier groups and keys. Non-negative
// values passed there are virtual key codes.
namespace key_query {
enum name : int {
    control = -100, // the left key only
    left_control = -99,
    right_control = -98,
    shift = -97, // the left key only
    left_shift = -96,
    right_shift = -95,
    option = -94,
    left_option = -93,
    right_option = -92,
    command = -91,
    left_command = -90,
    right_command = -89,
    // The modifier of editing shortcuts (select all, copy, paste, undo): Command on the Mac, Control
    // on Windows.
    shortcut = -86,
    space = -88,
    tab = -87,
    none = -1, // no key at all: never down
};
} // namespace key_query

// macOS virtual key codes: keys by their place on the keyboard, as the keyboard state is polled.
namespace virtual_key {
inline constexpr int q = 12;
inline constexpr int j = 38;
inline constexpr int tab = 48;
inline constexpr int space = 49;
inline constexpr int right_command = 54;
inline constexpr int command = 55; // the left key
inline constexpr int left_shift = 56;
inline constexpr int option = 58; // the left key
inline constexpr int left_control = 59;
inline constexpr int right_shift = 60;
inline constexpr int right_option = 61;
inline constexpr int right_control = 62;
} // namespace virtual_key

// What key_down events carry: the key's upper-cased character, or the platform's code for a key
// without one (arrows, function and editing keys).
namespace event_key {
inline constexpr uint32_t tab = 9;
inline constexpr uint32_t return_key = 13;
inline constexpr uint32_t escape = 27;
inline constexpr uint32_t up = 63232;
inline constexpr uint32_t down = 63233;
inline constexpr uint32_t left = 63234;
inline constexpr uint32_t right = 63235;
inline constexpr uint32_t f5 = 63240;
inline constexpr uint32_t forward_delete = 63272;
inline constexpr uint32_t home = 63273;
inline constexpr uint32_t end = 63275;
} // namespace event_key

} // namespace nimbit::ui
