#pragma once

#include <cstdint>

// A command to the controller and the popup window, posted by the shortcut chord, the popup's own
// toolbar or a host script.
struct PopupCommand {
    enum Kind : uint32_t {
        Show = 0,
        Screenshot = 1,
        Export = 2,
        Gallery = 3,
        Preferences = 4,
        Logo = 5,
        SaveSettings = 6,
        NewsCount = 7,
    };
    uint32_t kind = Show;
};

// What Execute answers when there is no window to carry a command, and for every command but
// NewsCount.
inline constexpr uint32_t NoCommandResult = 0xFFFFFFFFu;
