// Drawing the toolkit-free control models (shell/Controls.h) into Qt controls,
// and the one path by which typed text goes back into a model.
#pragma once

#include <functional>

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>

#include "ui/Controls.h"

class QPlainTextEdit;

namespace km::gui {

// Refills the list only where its entries differ, and selects ListIndex.
void drawList(QListWidget *widget, const ListBox &model);
void drawCombo(QComboBox *widget, const ComboBox &model);
// Sets the text only when it differs, so that the caret and selection stay;
// true when it was set. The box's signals are blocked meanwhile.
bool drawText(QLineEdit *widget, const QString &text);

// The one path of typed text into a model: changed runs with the box's text
// after every change of it that is not the model's own redraw. The keystroke
// shield writes into a box as the box's own edit, not as a key event, so a
// model that listened for edits by the keyboard alone (textEdited) would miss
// whatever was typed in a shielded window; this listens for every change, and
// drawText and drawPlain (records/RecordsViews.h) write the model's value with
// the box's signals blocked, so a redraw never comes back as an edit.
void onTextTyped(QLineEdit *box, std::function<void(const QString &)> changed);
void onTextTyped(QPlainTextEdit *box, std::function<void(const QString &)> changed);

// Keeps what is selected in a line or text box out of the desktop's selection
// (X11's PRIMARY). A box hands its selection there on each mouse or Shift
// selection, where any program gets it with a middle click for as long as
// this one runs; a masked box does not, but a password shown in clear would.
// The moment the selection takes this program's text and it is what the box
// has selected, it is cleared again, before the event loop can answer any
// other client's request for it. The box still shows its selection.
void keepOutOfSelection(QWidget *box);

// Marks a line or text box that shows a record's value (a detail pane's, an
// editor's), and keeps it out of the selection. Its Ctrl+C and Ctrl+X are
// not the box's own but those of the window's Edit menu where it has one
// (the main window's): the program's one Copy, which marks the text secret
// and arms the clipboard wipe, and which takes the whole value when nothing
// is selected and always the whole of a masked one
// (ActiveControl::recordValue). In a dialog the box's own remain, under the
// shield's arming of the wipe. The box's own right-click menu, whose Copy
// would pass the wipe by, is not offered.
void showsRecordValue(QWidget *field);
bool isRecordValue(const QWidget *field);

} // namespace km::gui
