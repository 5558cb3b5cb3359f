// The passphrase and PIN dialog: a masked text box with OK and Cancel, an
// optional confirmation entry and an optional quality check. Its widget is a
// shielded window; the rules of the dialog live here.
#pragma once

#include <QString>

#include "ui/WindowModel.h"

namespace km {

class frmPW : public WindowModel {
public:
    // Set before the dialog is shown.
    QString Caption = QStringLiteral("Kestrelmondarin");
    QString lblPrompt;
    QString txtPath;                // file name in capitals and folder
    bool chkPwLength = true;        // OK needs at least 8 characters
    bool chkConfirm = false;        // ask twice
    bool chkCheckPWquality = false; // warn of a weak passphrase
    bool chkShowClear = false;
    QString chkShowClearCaption = QStringLiteral("Show Passphrase in clear");

    // The control's state.
    QString txtInput;
    bool cmdOKEnabled = false;
    bool masked = true;

    // The result: the passphrase (wipe it once hashed) and the cancel flag.
    QString PassphraseRaw;
    bool DialogCancelled = false;

    QString caption() const override { return Caption; }

    void Form_Load();
    void txtInput_Change();
    void chkShowClear_Click();
    void cmdOK_Click();
    void cmdCancel_Click();

    ~frmPW() override;

private:
    QString m_firstEntry;
    bool m_haveFirst = false;
    QString m_prompt;
};

// Characters classed as a passphrase's quality check classes them.
bool IsWeakPassphrase(const QString &text);

} // namespace km
