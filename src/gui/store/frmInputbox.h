// The shielded input box over its model: a prompt, a text box, OK and Cancel.
#pragma once

#include "gui/ModelDialog.h"
#include "store/frmInputbox.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace km::gui {

class frmInputbox : public ModelDialog {
    Q_OBJECT
public:
    frmInputbox(km::frmInputbox &model, QWidget *parent = nullptr);

    void sync() override;

    QLineEdit *txtInput = nullptr;
    QPushButton *cmdOK = nullptr;
    QPushButton *cmdCancel = nullptr;

protected:
    bool cancelCommand() override;

private:
    km::frmInputbox &m_model;
    QLabel *m_lblPrompt = nullptr;
};

} // namespace km::gui
