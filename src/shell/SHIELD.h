// The keystroke shield: what a shielded window does with each key while it is
// in front. Text keys never travel on to anyone else: the window takes them and
// writes the character into the focused text box itself. Ctrl+X, C and V go on
// as usual but arm the clipboard wipe first.
//
// This module holds the decisions only, as plain functions from a key event to
// an action, so they run without a display; gui/shell/ShieldFilter carries them
// out on real widgets.
//
// Keys are numbered as virtual keys (65 'A' .. 90 'Z', 48 '0' .. 57 '9', 186..192
// and 219..222 the punctuation keys, 226 the extra key of European keyboards,
// 160/161 Shift, 17 Ctrl, 20 caps lock, 32 space).
//
// The rules, in the order ShieldKeyProc applies them:
//  1. Shift is tracked by its own key events (left and right share one flag, so
//     releasing either clears it); upper case is caps lock Xor Shift, for every
//     key, so with caps lock on a digit gives its shifted sign.
//  2. Ctrl+X, Ctrl+C, Ctrl+V on key down arm the wipe and pass on. Ctrl+A,
//     Ctrl+Z and Ctrl+Y on key down are the text box's select all, undo and
//     redo (Ctrl+Shift+Z redo too): with a text box in focus the key is
//     swallowed and the shield carries the command out on the box, so the
//     keys mean the same whatever the desktop's key scheme says; with none
//     they pass on.
//  3. A text key on key down is swallowed and written over the selection of the
//     focused text box, the caret behind it. Ctrl with any other text key is
//     no command: Ctrl+B writes "b". With no text box in focus the key is gone.
//  4. Key up of a text key, Alt combinations and every other key pass on.
#pragma once

#include <array>

#include <QList>
#include <QString>

namespace SHIELD {

// The four keyboard messages a hook sees.
enum Message { KeyDown = 256, KeyUp = 257, SysKeyDown = 260, SysKeyUp = 261 };

enum VirtualKey {
    VkCtrl = 17,
    VkCapsLock = 20,
    VkSpace = 32,
    VkA = 65,
    VkC = 67,
    VkV = 86,
    VkX = 88,
    VkY = 89,
    VkZ = 90,
    VkLeftShift = 160,
    VkRightShift = 161,
    VkOem102 = 226,
};

// One key event as the shield sees it.
struct KeyEvent {
    int code = 0; // 0: an event to act on; anything else passes untouched
    int message = KeyDown;
    int vkCode = 0;
    bool ctrlDown = false;
    bool capsOn = false; // caps lock toggled, as the system reports it
};

// The focused text box: its text and selection in characters.
struct TextControl {
    QString Text;
    int SelStart = 0;
    int SelLength = 0;
};

// An editing command that the shield carries out on the focused text box.
enum class EditCommand { None, SelectAll, Undo, Redo };

struct ShieldAction {
    bool swallow = false; // the key stops here: nothing else sees it
    EditCommand command = EditCommand::None;
    bool write = false; // control holds the text box after the write
    QString text;       // the character written
    TextControl control;
    bool armWipe = false; // ArmClipboardWipe
};

// The module's state; tests reset it with state() = {}.
struct State {
    int vkCode = 0; // the last key event's key
    bool shiftDown = false;
    bool capsOn = false;
    bool upperCase = false;
};
State &state();

// Whether the key is one the shield takes over.
bool IsTextKey(int vk);
// Rule 2: Ctrl+X, C or V on key down.
bool IsClipboardKey(const KeyEvent &event);
// Rule 2: the command of Ctrl+A, Z or Y on key down (with Shift, Z is redo);
// None for any other key.
EditCommand EditCommandOf(const KeyEvent &event, bool shiftDown);
// The character of a key with Shift up or down on the base layout; empty for a
// key that gives none. Only Shift counts: no dead keys, no AltGr layer.
QString KeyToText(int vk, bool upper);
// The toggle bit of a key state as a 16-bit number: 1 and -127 mean on.
bool CapsLockIsOn(qint16 keyState);

// The hook of shielded windows. focused is the focused control when it is a
// text box, nullptr otherwise.
ShieldAction ShieldKeyProc(const KeyEvent &event, const TextControl *focused);
// The hook of the address window at load: it only watches. Ctrl+X and Ctrl+C on
// any of the four messages arm the wipe (V does not); every key passes on.
ShieldAction WatchKeyProc(const KeyEvent &event);

// Which hook a protected window holds, and how it changes.
enum class HookProc { None, Shield, Watch };
struct WindowHook {
    HookProc installed = HookProc::None;
};
// At load: the address window starts with Watch, every other with Shield.
void HookAtLoad(WindowHook &window, HookProc proc);
// Each tick while the window lives (and whenever it comes to or leaves the
// front): out of front the hook goes; back in front a window without one gets
// the full shield, the address window included.
void TimerHook(WindowHook &window, bool inFront);
void HookAtUnload(WindowHook &window);

// The burst of false keys that hides a passphrase's real keys from a logger
// on systems that offer no low-level hook.
constexpr int BurstKeyCount = 135;
constexpr int BurstDrawRange = 104; // indexes at and above are filled, never drawn
constexpr int BurstShiftedBelow = 36;
std::array<quint8, BurstKeyCount> BurstKeys();
struct BurstKey {
    quint8 vk = 0;
    bool shift = false;
};
// One burst: 2 to 9 keys drawn from BurstKeys with Rnd.
QList<BurstKey> DrawBurst();
// The system code of a version record: 1 to 7 for the known systems, 0 else.
// Below 6 the passphrase dialog bursts at every change of its text.
int WindowsVersion(int platformId, int major, int minor);

// The subclass rule of a hooked control (the budget list's header, a
// confidential field): the reply it gives itself, or -1 when the message goes
// on to the control's own procedure.
enum ControlMessage { Notify = 78, ContextMenu = 123 };
enum NotifyCode { HeaderBeginTrack = -306, HeaderDividerDblClick = -305 };
int HookedControlReply(int message, int notifyCode);

} // namespace SHIELD
