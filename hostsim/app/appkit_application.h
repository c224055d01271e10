#pragma once

#include "host/native_application.h"

#include <string>

// The application table over AppKit itself: the real main menu of NSApp and whether the
// application is active. The on-screen host installs it so that the plug-in's Effect-menu walk and
// its activity check see exactly what the artist sees.
const NativeApplication* AppKitApplicationTable();

// The host executable's path that the table reports (the simulated installation's binary).
void SetAppKitExecutablePath(const std::string& path);
