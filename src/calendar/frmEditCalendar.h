// The appointment editor: one appointment or one recurring series, new or
// changed. The calendar window fills a CalendarState (new or which row, the
// clicked slot or occurrence) and opens the editor with
// context.dialogs.showModal(editor); on closing the state says whether a row
// was written and which date the calendar should go to.
//
// The model holds every control's value; the dialog (gui/calendar) draws them
// and hands each click, pick and typed text to the matching command here.
// Conventions:
//  1. times are moments (minutes since the store's epoch); dayBase is the
//     midnight of the appointment's day. The end never lies before the start
//     and never after the next midnight (shown as 24:00).
//  2. weekFlags and weekdayPick are in the system's week order (index 0 / pick
//     1 is FirstDayOfWeek()); the rule string stores weekdays 1 Sunday .. 7
//     Saturday, turned with AbsoluteWeekday / LocalWeekday.
//  3. While the editor fills controls itself (loading, redrawing) the reentry
//     guard is set and every change command does nothing, as the controls'
//     own change events would do nothing.
//  4. Nothing is written when nothing differs from the row as it was loaded:
//     the row keeps its bytes, its noise columns included.
#pragma once

#include <array>

#include <QByteArray>
#include <QDate>
#include <QString>

#include "calendar/CALENDAR.h"
#include "calendar/CalendarState.h"
#include "calendar/Recurrence.h"
#include "shell/SectionContext.h"
#include "ui/Dialogs.h"
#include "shell/frmMDI.h"
#include "ui/Controls.h"
#include "ui/WindowModel.h"

namespace CALENDAR {

// ---- The save path of every appointment writer that edits whole records ----

struct SavedAppointment {
    qint64 id = 0;        // the row's fPK (0: nothing written to a new row, or refused)
    bool written = false; // a row was written
};

// Writes edited over loaded (the record as it was read; a default record for
// a new row) the way the editor saves: midnight to midnight counts as all-day
// and an all-day event is made midnight to midnight; the fields are compared
// one by one and nothing is written when none differs (a new row always is);
// otherwise the record, with userNumber as its user, goes to WriteAppointment.
// rowId 0 or a row that is gone makes a new row.
SavedAppointment SaveAppointmentRecord(qint64 rowId, bool isNew, const AppointmentRecord &loaded,
                                       AppointmentRecord edited, int userNumber);

// The last day of count occurrences of a rule of the given kind from start,
// and the count the rule frame reads back up to that day, as the editor
// reckons them: weekFlags, weekday (the n-th weekday's) in the system's week
// order; step the interval (weeks, days, months), ignored where the kind has
// none; month the yearly n-th weekday's. For the weekly and n-th weekday kinds
// start moves to the first occurrence. A last day after the calendar's is told
// (message 150) and limited, except for the monthly rule on a day.
struct RuleEnd {
    QDate end;
    int count = 0;
};
RuleEnd ComputeRuleEnd(km::Dialogs &ui, int kind, QDate &start, int count, int step, const WeekFlags &weekFlags,
                       int ordinal, int weekday, int month);

// The eleven alarm leads of a timed and of an all-day event, in list order.
// The all-day leads are times of the event's own day; "18:00" stands for
// -1020 (17:00) as the stored rows have it.
struct AlarmEntry {
    const char *text;
    int lead; // minutes before the start
};
const std::array<AlarmEntry, 11> &AlarmEntries(bool allDay);

class frmEditCalendar : public km::WindowModel {
public:
    frmEditCalendar(const km::SectionContext &context, CalendarState &state);
    QString caption() const override { return QStringLiteral("Appointment"); }

    struct Times {
        qint32 start = 0;
        qint32 end = 0;
        friend bool operator==(const Times &, const Times &) = default;
    };
    enum TimeRow { RowStart = 0, RowEnd = 1, RowDuration = 2 };
    enum RedoOptionIndex { OptionNone = 0, OptionWeekly = 1, OptionDaily = 2, OptionMonthly = 3, OptionYearly = 4 };

    // ---- What the window shows ----
    QString ctlSubject, ctlLocation, ctlNotes;
    bool ctlPrivate = false;
    QDate ctlDate;    // the appointment's day
    QDate ctlDateEnd; // the end's day (the next day for an end at 24:00); shown only
    QString ctlHH[3], ctlNN[3];   // rows Start, End, Duration as shown
    int SliderHH[2] = {0, 0};     // hours of rows Start (0..23) and End (0..24)
    int SliderNN[2] = {0, 0};     // five-minute steps (0..11)
    bool ctlAllday = false;
    bool ctlAlarmYN = false;
    km::ComboBox ctlAlarmAnticipate; // item data: the lead in minutes
    bool alarmEnabled() const { return ctlAlarmYN; }
    km::TimerModel tmrDuration{120, false};

    // The recurrence frame.
    QString QQ[4];                // intervals: 0 days, 1 weeks, 2 months (day of month), 3 months (n-th weekday)
    QString occ;                  // the number of occurrences
    km::ComboBox cboRedoWhen;     // "first" .. "last!"
    km::ComboBox cboRedoWeekday;  // weekday names in the system's week order
    km::ComboBox cboRedoMonth;    // month names
    QDate ctlDateStartRedo() const { return redoStart; }
    QDate ctlDateEndRedo() const { return redoEnd; }
    bool occEnabled() const { return redoEndOption == EndAfterCount; }
    bool dateEndRedoEnabled() const { return redoEndOption == EndOnDate; }
    // The day of month of kinds 4 and 6 as their row shows it ("15", "15  March").
    QString redoDayText() const;
    // The name of a weekday box, in the system's week order (0 = first day).
    QString weekdayLetter(int index) const;

    // ---- State ----
    Times times;
    qint32 dayBase = 0;
    Times savedTimes; // {0, 0} until all-day was first ticked
    QDate redoDate, redoStart, redoEnd;
    int redoCount = 5;
    int interval = 1;
    int interval2 = 1;
    int redoOption = OptionNone;
    int redoAlt = 0;
    int redoKind = RedoNone;
    int redoEndOption = EndAfterCount;
    WeekFlags weekFlags{};
    int weekdayPick = 1, ordinalPick = 1, monthPick = 1;
    AppointmentRecord values; // the record as loaded
    bool isNew() const { return m_state.gEditIsNew; }

    // ---- Commands ----
    void Form_Load();
    // The first showing: LoadAppointment. False when the window closes instead.
    bool Form_Activate();
    bool LoadAppointment();
    void LoadRule(const QByteArray &redo);
    void SaveAppointment();
    void cmdOK_Click() { SaveAppointment(); }
    void cmdEsc_Click();

    void ctlAllday_Click(bool ticked);
    void ctlAlarmYN_Click(bool ticked);
    void ctlAlarmAnticipate_Click(int index);
    // Selects the entry of that lead; a lead the list does not offer is kept
    // as it is with nothing selected.
    void setAlarmLead(int lead);
    // A time box left with this text; false: not a number, the focus stays.
    bool ctlHH_Validate(int row, const QString &text);
    bool ctlNN_Validate(int row, const QString &text);
    void SliderHH_Change(int row, int hours);
    void SliderNN_Change(int row, int steps);
    void cmdDuration_MouseDown(int index); // 0 shorter, 1 longer
    void cmdDuration_MouseUp();
    void tmrDuration_Timer();
    // Start and end as given (the command line's times), kept within the day
    // and in order, and shown.
    void setTimes(qint32 start, qint32 end);

    void ctlDate_Change(const QDate &date);
    void ctlDateStartRedo_Change(const QDate &date);
    void ctlDateEndRedo_Change(const QDate &date);
    void Redo_Click(int index);
    void RedoAlt_Click(int index);
    void RedoEnd_Click(int index);
    void RedoWD_Click(int index, bool ticked);
    void cboRedoWhen_Click(int index);
    void cboRedoWeekday_Click(int index);
    void cboRedoMonth_Click(int index);
    // The text of an interval or count box after the person's edit; the key
    // filter turns what is not a digit into "1" (message 12), a leading "0"
    // into "1", and an interval above 255 back (message 13).
    void QQ_Change(int index, const QString &text);
    void occ_Change(const QString &text);
    // The key filter of one typed character: the character the box takes.
    QChar FilterKey(const QString &textBefore, QChar key, bool isInterval);

    // ---- The rule dialog's computations ----
    void ResetRule();
    void RecalcRedoEnd();
    void EndFromCount();
    struct Computed {
        QDate end;
        int count = 0;
    };
    Computed ComputeEnd();
    void CountFromEnd();
    QByteArray RedoStringOut() const;

    // A date picked in one of the pickers, limited to the calendar's days
    // (messages 149, 150).
    QDate LimitPickedDate(const QDate &date);

private:
    void showTimes();
    void showRule();
    void fillAlarmList(bool allDay, int lead);
    QString filterNumberText(const QString &before, const QString &after, bool isInterval);
    int selectedLead() const;
    void nthWeekdayChanged();

    km::SectionContext m_ctx;
    CalendarState &m_state;
    bool m_guard = false;
    bool m_loaded = false;
    int m_durationButton = -1;
    int m_lead = 0; // the lead of a loaded alarm that is not in the list
};

} // namespace CALENDAR
