// The text editor over its model: a subject line and the text; shielded.
#pragma once

#include "gui/ModelDialog.h"
#include "records/frmClassified.h"

class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace km::gui {

class frmEditText : public ModelDialog {
    Q_OBJECT
public:
    frmEditText(km::frmEditText &model, QWidget *parent = nullptr);
    void sync() override;

    QLineEdit *txtSubject = nullptr;
    QPlainTextEdit *txt = nullptr;
    QPushButton *cmdOK = nullptr;
    QPushButton *cmdEsc = nullptr;

protected:
    bool cancelCommand() override;

private:
    km::frmEditText &m_model;
};

} // namespace km::gui
