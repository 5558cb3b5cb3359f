// The text editor over its model: a subject line and the text; shielded.
#pragma once

#include "gui/shell/SortedSectionView.h"
#include "records/frmClassified.h"

class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace km::gui {

class frmEditText : public RecordEditorDialog {
    Q_OBJECT
public:
    frmEditText(km::frmEditText &model, QWidget *parent = nullptr);
    void sync() override;

    QLineEdit *txtSubject = nullptr;
    QPlainTextEdit *txt = nullptr;

private:
    km::frmEditText &m_model;
};

} // namespace km::gui
