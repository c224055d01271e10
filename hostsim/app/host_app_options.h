#pragma once

// The on-screen simulated host's command line.

#include <string>

struct HostAppOptions {
    std::string project;  // project file (JSON)
    std::string plugins;  // the Plug-ins folder the plug-in is loaded from (its first usable bundle)
    std::string root;     // the simulated disk: installation, documents and data folders
    std::string newsUrl;  // the news endpoint handed to the plug-in; empty leaves it as configured
    std::string record;   // the session record file; empty: <root>/session.json
    bool control = false; // read control lines from standard input (tests and walkthroughs)
    bool ok = true;       // false when the command line is unusable
};

HostAppOptions ParseHostAppOptions(int argc, char** argv);
