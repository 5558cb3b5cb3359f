#include "gui/shell/PaneActionMenu.h"

#include <QMenu>

namespace km::gui {

QString PopUpActionMenu(QWidget *parent, const TextActions::MenuState &state, const QPoint &global) {
    QMenu menu(parent);
    const auto entry = [&menu](const char *name, const char *caption, bool enabled) {
        QAction *a = menu.addAction(QString::fromLatin1(caption));
        a->setData(QString::fromLatin1(name));
        a->setEnabled(enabled);
    };
    entry("mnuAddressBoxRCcopy", "Copy", state.copy);
    entry("mnuAddressBoxRCStripped", "Copy (no spaces)", state.copyStripped);
    entry("mnuAddressBoxRCSendMail", "Send Mail...", state.sendMail);
    entry("mnuAddressBoxRCDialPhone", "Dial...", state.dial);
    entry("mnuAddressBoxRCwww", "Open Website...", state.openWebsite);
    QAction *chosen = menu.exec(global);
    return chosen ? chosen->data().toString() : QString();
}

} // namespace km::gui
