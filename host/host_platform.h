#pragma once

// What the controller asks of the platform it runs on. The menu and activity come from AppKit (on
// macOS, and over GNUstep in the plug-in with real windows), from the host's main window on Windows
// or, in the command-line build, from the loading process's NativeApplication table (see
// host/native_application.h).

#include <cstddef>
#include <string>
#include <string_view>

namespace HostPlatform {

// The path of the running executable (the host's binary inside its application bundle), with "/"
// separators.
std::string ExecutablePath();

// How many folders up from the executable the host keeps its Presets folder: out of
// <name>.app/Contents/MacOS to the folder holding the bundle (4) on the Mac, whose layout the
// simulated host copies; the executable's own folder, "Support Files", on Windows (1).
int PresetsFolderLevels();

// The host's main window, as the utility suite reports it at start-up: Windows reaches the host's
// menu bar through it; the other platforms ignore it.
void SetMainWindow(void* window);

// Whether the host is the frontmost application.
bool IsHostActive();

// Applies an effect the way the artist would: through the host's Effect menu, the main menu's item
// at index 5 (the menu needs at least 6 items). Finds the first item of that menu whose title equals
// category (ignoring case), which must be enabled and have a submenu, then in it the first item titled
// name (ignoring case), and sends that item's action. Returns whether the item was found and sent.
// The host hands out categories cut to CutCategoryLength bytes ("Weichzeichnen und Scharfzeichne"):
// a category that long, when no title equals it, stands for the first title that begins with it.
bool ChooseEffectMenuItem(std::string_view category, std::string_view name);
inline constexpr size_t CutCategoryLength = 31;

} // namespace HostPlatform
