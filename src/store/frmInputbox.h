// The shielded replacement of the system's input box: a prompt, a text box,
// OK and Cancel. Dialogs::inputBox shows it in the program.
#pragma once

#include <QString>

#include "ui/WindowModel.h"

namespace km {

class frmInputbox : public WindowModel {
public:
    QString Caption;
    QString lblPrompt;
    QString txtInput;

    // The shared result: DialogResult is the text on OK, empty on Cancel.
    QString DialogResult;
    bool DialogCancelled = false;

    QString caption() const override { return Caption; }

    void cmdOK_Click() {
        DialogCancelled = false;
        DialogResult = txtInput;
        close(true);
    }
    void cmdCancel_Click() {
        DialogCancelled = true;
        DialogResult.clear();
        close(false);
    }
};

} // namespace km
