// The "Memo" dialog over its model: subject, category, body and the private
// flag; shielded. Whatever is typed goes to the model at once and marks it
// changed.
#pragma once

#include "gui/shell/SortedSectionView.h"
#include "records/frmNotepad.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QToolButton;

namespace km::gui {

class frmEditNotepad : public RecordEditorDialog {
    Q_OBJECT
public:
    frmEditNotepad(km::frmEditNotepad &model, QWidget *parent = nullptr);
    void sync() override;

    QLineEdit *ctlSubject = nullptr;
    QComboBox *ctlCategory = nullptr;
    QToolButton *cmdEditCat = nullptr;
    QPlainTextEdit *ctlNote = nullptr;
    QCheckBox *ctlPrivate = nullptr;

private:
    km::frmEditNotepad &m_model;
};

} // namespace km::gui
