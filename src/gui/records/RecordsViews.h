// The memo and confidential-data windows on Qt: the two section views and
// their three dialogs, and the few drawing helpers they share.
#pragma once

#include <functional>

class QPlainTextEdit;
class QString;
class QWidget;

namespace km::gui {

class QtDialogs;

// Registers the memo, task and confidential section views with the main
// window and their editors (and the task list's date dialog) with the dialogs.
void RegisterRecordsViews(QtDialogs &dialogs);

// A control that shows a value and takes neither clicks nor focus, without
// the greyed look of a disabled one (the private flag of a detail pane).
void ShowOnly(QWidget *control);
// A section view fills its background with the plain window colour, not the
// darker colour of the main window's client area.
void DrawOnWindowColour(QWidget *view);
// Sets the text only when it differs, without signals, so that the caret and
// the scroll position stay.
void drawPlain(QPlainTextEdit *widget, const QString &text);

} // namespace km::gui
