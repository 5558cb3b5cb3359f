// The memo section over its model: the category filter and the list of
// subjects on the left, the shown memo on the right, and the buttons New,
// Edit, Delete. Every click goes to the model, then the view redraws. The
// memo's subject, body and private flag edit in place, under the keystroke
// shield; each edit goes into the model at once, which asks "Store record?"
// when the memo is left.
#pragma once

#include <functional>

#include "gui/shell/SortedSectionView.h"
#include "records/frmNotepad.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QToolButton;

namespace km::gui {

class frmNotepad : public SortedSectionView {
    Q_OBJECT
public:
    frmNotepad(km::frmNotepad &model, QWidget *parent = nullptr);
    void sync() override;

    QComboBox *cboCategories = nullptr;
    QToolButton *cmdEditCat = nullptr;
    QListWidget *ListSelect = nullptr;
    QLineEdit *txtSubject = nullptr;
    QComboBox *cboCategory = nullptr;
    QPlainTextEdit *txtInput = nullptr;
    QCheckBox *ctlPrivate = nullptr;
    QLabel *ctlDateCreated = nullptr;
    QLabel *ctlLastModified = nullptr;
    QPushButton *cmdAdd = nullptr;
    QPushButton *cmdEdit = nullptr;
    QPushButton *cmdDelete = nullptr;

private:
    km::frmNotepad &m_model;
};

} // namespace km::gui
