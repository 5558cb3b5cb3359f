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

} // namespace km::gui
