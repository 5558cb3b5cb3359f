// The address editor on Qt: the name and filing group, the three address
// pages on one place, the nine communication slots, the personal and the
// user-defined fields and the notes, under the keystroke shield.
#pragma once

#include <array>

#include "address/frmAddress.h"
#include "gui/shell/SortedSectionView.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QRadioButton;
class QStackedWidget;
class QToolButton;

namespace km::gui {

class frmEditAddress : public RecordEditorDialog {
    Q_OBJECT
public:
    frmEditAddress(km::frmEditAddress &model, QWidget *parent);
    void sync() override;

    // By field index, the line boxes of the fields with controls.
    std::array<QLineEdit *, Address::FieldCount> ctl{};
    QComboBox *ctlFileAs = nullptr;
    QComboBox *ctlCategory = nullptr;
    QToolButton *cmdEditCat = nullptr;
    QButtonGroup *ctlAddress = nullptr;
    QStackedWidget *pages = nullptr;
    QButtonGroup *DisplayCom = nullptr;
    std::array<QComboBox *, 9> ctlComLabel{};
    QLineEdit *ctlBirthday = nullptr;
    std::array<QLabel *, 4> lblUserDef{};
    QPlainTextEdit *ctlNotes = nullptr;
    QCheckBox *ctlPrivate = nullptr;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QLineEdit *field(int index, QWidget *parent);
    km::frmEditAddress &m_model;
};

} // namespace km::gui
