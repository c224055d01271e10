#pragma once

// What the simulated host shows and records of a session: the project as the artist sees it (its
// compositions, layers, the selection and what was applied to each layer) and what the plug-in did.
// The on-screen host writes the record as a JSON file after every change, so that a test or a
// walkthrough can wait for a change instead of guessing how long it takes.

#include "host/sdk/script_object.h"

#include <string>
#include <vector>

namespace hostsim {

class SimHost;

// One call made from the host's script console.
struct ConsoleCall {
    std::string word;
    long status = 0;
    std::string result; // DescribeResult of the tagged value
};

// One key press that reached a window of the on-screen host, and the repaint after it.
struct KeyTiming {
    std::string characters; // what the key typed, "" for keys without characters
    unsigned short keyCode = 0;
    std::string window;      // the title of the window it went to
    double latencyMs = -1;   // press to repainted; negative when the press time is not comparable
    double queuedMs = -1;    // of which waiting to be dispatched (the loop busy with something else)
    double pressedAtMs = -1; // the press on the monotonic clock (see WindowShown); -1 when unknown
};

// A window that became visible, and when its first paint was done (milliseconds on the monotonic
// clock, the one time.monotonic() reads in a script).
struct WindowShown {
    std::string title;
    double paintedAtMs = 0;
};

// A visible window of the application, in screen coordinates with y down (as X reports them).
struct VisibleWindow {
    std::string title;
    int x = 0, y = 0, width = 0, height = 0;
    bool key = false;
};

// The host application's own part of the record.
struct SessionState {
    long idleTicks = 0;
    bool active = false;
    int deathHooksRun = 0;
    std::vector<ConsoleCall> console;
    // The on-screen host's timings (the latest ones) and its windows as they are now.
    std::vector<KeyTiming> keys;
    std::vector<WindowShown> shownWindows;
    std::vector<VisibleWindow> windows;
};

// A tagged script value as a script panel would print it: "undefined", "integer -1", "double 2.5",
// "string text", "script" followed by a newline and the text, "type N" for anything else.
std::string DescribeResult(const TaggedData& value);

// Runs one line of the script console: a word, then optionally a number or a text, handed to the
// plug-in's execute; a returned string is freed as the engine frees it. An empty word runs nothing.
ConsoleCall RunConsoleLine(SimHost& host, const std::string& line);

// The record as JSON text: the project's compositions and layers (name, type, selected, effects by
// name, presets by file), counts of what the plug-in did through the host, scripts it ran, the
// console's calls and the host state.
std::string SessionRecord(SimHost& host, const SessionState& state);

// The project as indented text, one line per composition, layer and applied effect or preset; the
// selected layer is marked with "*".
std::string ProjectOutline(SimHost& host);

// Writes text to path through a temporary file beside it and a rename, so a reader never sees half
// a record. False when the folder cannot be written.
bool WriteFileAtomically(const std::string& path, const std::string& text);

} // namespace hostsim
