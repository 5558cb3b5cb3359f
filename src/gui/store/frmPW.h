// The passphrase and PIN dialog over its model: a masked text box, the
// show-in-clear box, OK and Cancel. A shielded window.
#pragma once

#include "gui/ModelDialog.h"
#include "store/frmPW.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace km::gui {

class frmPW : public ModelDialog {
    Q_OBJECT
public:
    frmPW(km::frmPW &model, QWidget *parent = nullptr);
    ~frmPW() override;

    void sync() override;

    QLineEdit *txtInput = nullptr;
    QCheckBox *chkShowClear = nullptr;
    QPushButton *cmdOK = nullptr;
    QPushButton *cmdCancel = nullptr;

protected:
    bool cancelCommand() override;

private:
    km::frmPW &m_model;
    QLabel *m_lblPrompt = nullptr;
    QLabel *m_txtPath = nullptr;
};

} // namespace km::gui
