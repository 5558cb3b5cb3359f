// The keystroke shield on real windows. A shielded window, while it is the
// active window, takes every text key itself: the character is written into
// the focused text box by SHIELD::ShieldKeyProc's rule and the key event ends
// there, so no other widget, shortcut or input method sees it. On X11 the
// window also holds the keyboard grab while it is active, so no other client
// gets a copy of any key; the grab goes when the window is deactivated or
// hidden and comes back when it is active again. On Wayland a client cannot
// grab the keyboard, and needs not: the compositor sends keys only to the
// focused surface, so other programs never see them. Ctrl+X, C and V arm the
// clipboard wipe and then work as usual; Ctrl+A, Z and Y are the box's
// select all, undo and redo, carried out by the shield on the box.
#pragma once

class QKeyEvent;
class QWidget;

namespace km {
class Shell;
}

namespace km::gui {

// The main window whose clipboard wipe Ctrl+X and Ctrl+C arm in a shielded
// window; the main window's widget sets it for its life (nullptr: none).
void SetShieldShell(Shell *shell);

// Puts the shield on window for its whole life (the filter dies with it).
void InstallShield(QWidget *window);
// Puts the shield on one pane of a window for the pane's whole life: a
// section's detail pane, where records are edited in place inside the main
// window. It takes the text keys whose receiver is the pane or one of its
// controls while the window is active; the rest of the window keeps its keys
// (the list's type-ahead, the menus' shortcuts). The pane holds no keyboard
// grab: the grab is a whole window's and would take the list's and the
// menus' keys too. So in the pane no widget, shortcut or input method of this
// program sees a typed character, but on X11 a client that reads the whole
// keyboard could; the dialogs, the passphrase's among them, keep the grab.
void InstallPaneShield(QWidget *pane);
// The address window's variant: at first it only watches Ctrl+X and Ctrl+C to
// arm the wipe; once it has been out of front and comes back it carries the
// full shield.
void InstallWatch(QWidget *window);

// The key of a key event in the shield's virtual key numbering, 0 for a key
// the shield does not know (those pass as usual). Symbols count only on the
// Shift level where the base layout has them.
int VirtualKeyOf(const QKeyEvent &event);

// The subclass of one control at a time (the budget list, the confidential
// field under the mouse): no column resizing by the person, no context menu
// with its Cut, Copy and Paste. Hooking a control releases the one before.
void HookControl(QWidget *control);
void UnhookControl();

} // namespace km::gui
