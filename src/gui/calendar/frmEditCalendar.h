// The "Appointment" dialog over the appointment editor's model; shielded.
// Each control writes the person's action into the model through the command
// of the same name and the whole window is drawn again from the model, so the
// rule frame shows the row of the chosen kind and every derived value (end,
// count, first day) as the model computed it.
#pragma once

#include <QTimer>

#include "calendar/frmEditCalendar.h"
#include "gui/ModelDialog.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QSlider;
class QStackedWidget;
class QToolButton;

namespace km::gui {

class frmEditCalendar : public ModelDialog {
    Q_OBJECT
public:
    frmEditCalendar(CALENDAR::frmEditCalendar &model, QWidget *parent = nullptr);
    void sync() override;

    QLineEdit *ctlSubject = nullptr;
    QLineEdit *ctlLocation = nullptr;
    QPlainTextEdit *ctlNotes = nullptr;
    QCheckBox *ctlPrivate = nullptr;
    QDateEdit *ctlDate = nullptr;
    QLabel *ctlDateEnd = nullptr;
    QLineEdit *ctlHH[3] = {};
    QLineEdit *ctlNN[3] = {};
    QSlider *SliderHH[2] = {};
    QSlider *SliderNN[2] = {};
    QToolButton *cmdDuration[2] = {};
    QCheckBox *ctlAllday = nullptr;
    QCheckBox *ctlAlarmYN = nullptr;
    QComboBox *ctlAlarmAnticipate = nullptr;

    QRadioButton *Redo[5] = {};
    QStackedWidget *redoRows = nullptr; // one page per option
    QRadioButton *RedoAlt[3][2] = {};   // Daily, Monthly, Yearly: the two rows of each
    QLineEdit *QQ[4] = {};
    QCheckBox *RedoWD[7] = {};
    QLabel *monthDay = nullptr; // "day 14 every"
    QLabel *yearDay = nullptr;  // "14  May"
    QComboBox *cboRedoWhen[2] = {};    // monthly, yearly row
    QComboBox *cboRedoWeekday[2] = {}; // monthly, yearly row
    QComboBox *cboRedoMonth = nullptr;
    QDateEdit *ctlDateStartRedo = nullptr;
    QRadioButton *RedoEnd[3] = {};
    QLineEdit *occ = nullptr;
    QDateEdit *ctlDateEndRedo = nullptr;
    QWidget *rangeBox = nullptr;

    QPushButton *cmdOK = nullptr;
    QPushButton *cmdEsc = nullptr;

protected:
    bool cancelCommand() override;
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget *buildTimes();
    QWidget *buildRecurrence();
    QDateEdit *datePicker();

    CALENDAR::frmEditCalendar &m_model;
    QTimer m_duration; // mirrors the model's tmrDuration
    bool m_activated = false;
};

} // namespace km::gui
