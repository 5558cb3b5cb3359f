// The "Task" dialog over its model: description, notes, priority, category,
// the due and completed dates (each a tick that switches the date on, and the
// date, shown only while it is on), the private flag; shielded. Ctrl+Enter is
// OK. The "Due Date" dialog of the list's context menu is a calendar.
#pragma once

#include "gui/shell/SortedSectionView.h"
#include "records/frmTodo.h"

class QCalendarWidget;
class QCheckBox;
class QComboBox;
class QDateEdit;
class QLineEdit;
class QPlainTextEdit;
class QRadioButton;
class QToolButton;

namespace km::gui {

class frmEditTodo : public RecordEditorDialog {
    Q_OBJECT
public:
    frmEditTodo(km::frmEditTodo &model, QWidget *parent = nullptr);
    void sync() override;

    QLineEdit *ctlTask = nullptr;
    QPlainTextEdit *ctlNote = nullptr;
    QRadioButton *ctlPri[3] = {};
    QComboBox *cboCategory = nullptr;
    QToolButton *cmdEditCat = nullptr;
    QCheckBox *chkDateDue = nullptr;
    QDateEdit *ctlDateDue = nullptr;
    QCheckBox *chkDateCompleted = nullptr;
    QDateEdit *ctlDateCompleted = nullptr;
    QCheckBox *ctlPrivate = nullptr;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void pickerChanged(bool due);
    km::frmEditTodo &m_model;
};

class frmChooseDate : public ModelDialog {
    Q_OBJECT
public:
    frmChooseDate(km::frmChooseDate &model, QWidget *parent = nullptr);
    void sync() override;
    QCalendarWidget *calendar = nullptr;

private:
    km::frmChooseDate &m_model;
};

} // namespace km::gui
