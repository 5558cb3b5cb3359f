// The guards around an open store: the idle countdown that ends the program,
// the clipboard that empties itself, the switch that hides private records
// until the passphrase is given again, and the pause after a wrong passphrase.
// None of them locks the window and waits: the one answer to inactivity is to
// close the store, wipe and exit.
//
// This module keeps the idle clock and the session's switches; what the
// guards do to the main window (the wipe timer, the Lock button, busy) is the
// main window's own, in frmMDI.
//
// The idle clock counts only the program's own key and mouse events: the
// widget's application event filter calls NoteActivity for each one that
// reaches a window of this program, and nothing else does.
#pragma once

#include <QString>

namespace SessionGuards {

struct State {
    qint64 LastActivityTick = 0; // Clock::msecsSinceEpoch() of the last activity
    bool IdleFrozen = false;     // busy: idle time stays 0
    bool HooksInstalled = false; // activity counts only while installed
    bool ShowPrivate = false;    // private records are shown in this session
};
State &state();

// Starts counting activity; the clock starts now.
void InstallIdleHooks();
void RemoveIdleHooks();
// A key or mouse event of one of the program's windows.
void NoteActivity();
// Time since the last activity; 0 while IdleFrozen.
qint64 IdleMilliseconds();

// "Idle Countdown:  04:59" for 299 seconds left.
QString CountdownText(int remainingSeconds);

// Overwrites clipboard text (CLIPBOARD, and PRIMARY where the desktop has
// one) with random text of the same length, then clears it.
void WipeClipboardText();

} // namespace SessionGuards
