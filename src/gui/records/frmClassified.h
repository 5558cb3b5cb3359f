// The confidential section over its model: the sixteen kinds as buttons
// under five captions, the records of the kind in view, and the pane with the
// kind's labelled fields (passwords and PINs masked while the model says so),
// the notes and the private flag, which all edit in place under the keystroke
// shield; each edit goes into the model at once, which asks "Store record?"
// when the record is left. A right click on a field offers only "Copy", which
// goes through the model so that the clipboard wipe arms.
#pragma once

#include <array>
#include <functional>
#include <map>

#include "gui/shell/SortedSectionView.h"
#include "records/frmClassified.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QToolButton;

namespace km::gui {

class frmClassified : public SortedSectionView {
    Q_OBJECT
public:
    frmClassified(km::frmClassified &model, QWidget *parent = nullptr);
    void sync() override;

    std::map<int, QToolButton *> cat; // by kind, 1 to 16
    QListWidget *listSelect = nullptr;
    QLabel *lblCategory = nullptr;
    std::array<QLabel *, 5> lblTxt{};
    std::array<QLineEdit *, 5> txtCtl{};
    QPlainTextEdit *txtNotes = nullptr;
    QCheckBox *ctlPrivate = nullptr;
    QCheckBox *chkPlainPW = nullptr;
    QLabel *lblLastModified = nullptr;
    QPushButton *cmdAdd = nullptr;
    QPushButton *cmdEdit = nullptr;
    QPushButton *cmdDelete = nullptr;

private:
    // The field's own menu in place of the system's: "Copy" alone.
    void offerCopy(QWidget *control, int field, const QPoint &pos);

    km::frmClassified &m_model;
};

} // namespace km::gui
