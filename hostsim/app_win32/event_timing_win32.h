#pragma once

// The Windows host's side of the figures in hostsim/app/event_timing.h: its message loop reports
// each message around its dispatch, and the key presses are timed from the press (the message's
// own time stamp) to the end of the repaint they caused.

#include "hostsim/app/event_timing.h"

#include <windows.h>

// Call before dispatching a message taken from the queue; notes a key press's times.
void NoteMessageTaken(const MSG& message);

// Call after the message was handled (dispatched or handled by the loop itself): paints what the
// key asked for now, so that its end is on the clock.
void NoteMessageHandled(const MSG& message);
