#pragma once

// The simulated host's AppKit side that the application and the tests share: the connection to
// the window server and the host's main menu built from its model.

namespace hostsim {
class SimHost;
}

// Makes this process an AppKit application connected to the window server; false when there is
// none to connect to.
bool StartAppKitApplication();

// Builds the application's main menu from host's menu model (the Effect menu with its categories and
// their enabled states) and installs it. Choosing an effect's item applies it through host, then
// calls changed(context) when given. The application menu (the first) ends with Quit.
void InstallHostMainMenu(hostsim::SimHost& host, void (*changed)(void*) = nullptr, void* context = nullptr);
