// The pop-up of a pane's word actions (the address pane, the confidential
// fields): Copy, Copy (no spaces), Send Mail..., Dial..., Open Website...,
// enabled as the classifier said. Returns the chosen entry's name
// ("mnuAddressBoxRCcopy", ...) or "" when the menu was closed.
#pragma once

#include <QPoint>
#include <QString>

#include "shell/TextActions.h"

class QWidget;

namespace km::gui {

QString PopUpActionMenu(QWidget *parent, const TextActions::MenuState &state, const QPoint &global);

} // namespace km::gui
