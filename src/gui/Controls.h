// Drawing the toolkit-free control models (shell/Controls.h) into Qt controls.
#pragma once

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>

#include "ui/Controls.h"

namespace km::gui {

// Refills the list only where its entries differ, and selects ListIndex.
void drawList(QListWidget *widget, const ListBox &model);
void drawCombo(QComboBox *widget, const ComboBox &model);
// Sets the text only when it differs, so that the caret and selection stay.
void drawText(QLineEdit *widget, const QString &text);

} // namespace km::gui
