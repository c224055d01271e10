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

// What the popup window asks of the controller through its custom event: render the current frame
// and deliver it one way, or collect the catalogue again.
enum class PopupRequest : uint32_t {
    CaptureToClipboard = 0,
    CaptureToJpg = 1, // through the "Save to JPG" dialog
    CaptureToPng = 2, // through the "Save to PNG" dialog
    CaptureToFolder = 3,
    CollectCatalogue = 5,
};
