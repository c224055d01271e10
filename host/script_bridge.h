#pragma once

// The scripting interface: a script panel in the host posts commands to the plug-in by name through
// the exported function "execute".

#include "host/sdk/script_object.h"

#include <string>

class EffectsPopup;

// Return codes of execute.
inline constexpr long ScriptOk = 0;
inline constexpr long ScriptBadArguments = 20;

// Runs the command word in argv[0] against controller (which may be null) and sets result.
// Returns ScriptOk, or ScriptBadArguments when there is no string command word (result untouched).
long RunScriptCommand(EffectsPopup* controller, TaggedData* argv, long argc, TaggedData* result);

// The text of the "requeststatus" answer: the stored shortcut choice, then one line per toolbar
// button with its icon as an escaped PNG string.
std::string BuildStatusScript();

// The toolbar icon lines of the status script come from the popup, which owns the icons; until it
// registers its source, the status script carries the shortcut line alone.
using ToolbarIconScriptSource = std::string (*)();
void SetToolbarIconScriptSource(ToolbarIconScriptSource source);
