// The guards around an open store: the idle countdown that ends the program,
// the clipboard that empties itself, the switch that hides private records
// until the passphrase is given again, and the pause after a wrong passphrase.
// None of them locks the window and waits: the one answer to inactivity is to
// close the store, wipe and exit.
//
// The idle clock counts only the program's own key and mouse events: the
// widget's application event filter calls NoteActivity for each one that
// reaches a window of this program, and nothing else does.
#pragma once

#include <QString>

namespace km {
class WindowModel;
}

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

// Busy (or idle again): freezes the idle clock, wait cursor over the screen,
// the main window and the given window (a SectionWindow, or nullptr) disabled.
void SetBusy(km::WindowModel *window, bool busy);

// Overwrites clipboard text with random text of the same length, then clears
// it; the wipe timer stops in any case.
void WipeClipboard();
// Enables the wipe timer; a running one keeps its time.
void ArmClipboardWipe();

// The shared handler of the menu "Show/Hide Private Records" and the tool
// bar's Lock button: showing asks for the passphrase, hiding asks nothing.
void TogglePrivate();
// The menu caption and the Lock button follow ShowPrivate.
void mnuViewShowPrivate_Switch();
// Applies a change of ShowPrivate to the section in view.
void HideShow();

// The pause after a wrong passphrase: "Stand By", wait cursor, nothing can be
// typed, for the whole interval of timerPW. The event loop runs meanwhile.
void StandByPause();

} // namespace SessionGuards
