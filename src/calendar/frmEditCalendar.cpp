#include "calendar/frmEditCalendar.h"

#include <algorithm>

#include <QLocale>

#include "calendar/RulePrompts.h"
#include "platform/Clock.h"
#include "shell/SectionContext.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"

namespace CALENDAR {

namespace {

constexpr int MsgNoWeekday = 10;
constexpr int MsgIdConflict = 11;
constexpr int MsgNotNumber = 12;
constexpr int MsgOutOfRange = 13;
constexpr int MsgLowerDateLimit = 149;
constexpr int DefaultCount = 5;
constexpr int NewRowMorning = 540; // 09:00, a new row opened on a bare date
constexpr int NewRowLength = 30;

const std::array<AlarmEntry, 11> kTimedLeads = {{{"0 Min", 0},
                                                  {"5 Min", 5},
                                                  {"10 Min", 10},
                                                  {"15 Min", 15},
                                                  {"30 Min", 30},
                                                  {"1 Hour", 60},
                                                  {"2 hours", 120},
                                                  {"3 hours", 180},
                                                  {"6 hours", 360},
                                                  {"12 hours", 720},
                                                  {"1 Day", 1440}}};
const std::array<AlarmEntry, 11> kAllDayLeads = {{{"07:00", -420},
                                                   {"08:00", -480},
                                                   {"09:00", -540},
                                                   {"10:00", -600},
                                                   {"11:00", -660},
                                                   {"12:00", -720},
                                                   {"14:00", -840},
                                                   {"15:00", -900},
                                                   {"16:00", -960},
                                                   {"18:00", -1020},
                                                   {"20:00", -1200}}};

qint16 days16(const QDate &date) {
    return static_cast<qint16>(DayNumber(date) - EpochDay);
}
QDate dateOf16(qint16 day) {
    return DateOfDay(EpochDay + day);
}
QString twoDigits(int n) {
    return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0'));
}
int numberOf(const QString &text) {
    bool ok = false;
    const int n = text.trimmed().toInt(&ok);
    return ok ? n : 0;
}
qint64 monthsBetween(const QDate &a, const QDate &b) {
    return (b.year() - a.year()) * 12LL + (b.month() - a.month());
}
// Whether the system's n-th weekday (0-based) is Monday to Friday.
bool isWorkday(int index) {
    const int w = AbsoluteWeekday(index + 1);
    return w >= 2 && w <= 6;
}

// Raises the reentry guard for a scope and puts back what it was.
class Guard {
public:
    explicit Guard(bool &flag) : m_flag(flag), m_was(flag) { m_flag = true; }
    ~Guard() { m_flag = m_was; }
    Guard(const Guard &) = delete;
    Guard &operator=(const Guard &) = delete;

private:
    bool &m_flag;
    bool m_was;
};

} // namespace

// ---- The save path ----

SavedAppointment SaveAppointmentRecord(qint64 rowId, bool isNew, const AppointmentRecord &loaded,
                                       AppointmentRecord edited, int userNumber) {
    const qint32 midnight = edited.ctlAppoStart - MinuteOfDayOfMoment(edited.ctlAppoStart);
    if (edited.ctlAppoStart == midnight && edited.ctlAppoEnd == midnight + MinutesPerDay) edited.ctlAllday = 1;
    if (edited.ctlAllday) {
        edited.ctlAppoStart = midnight;
        edited.ctlAppoEnd = midnight + MinutesPerDay;
    }
    // The fields in the order they are compared: texts, times, flags, alarm,
    // rule, private. Each difference takes the edited value; others stay.
    int differences = isNew ? 1 : 0;
    AppointmentRecord r = loaded;
    const auto take = [&](auto AppointmentRecord::*field) {
        if (r.*field != edited.*field) {
            r.*field = edited.*field;
            ++differences;
        }
    };
    take(&AppointmentRecord::ctlSubject);
    take(&AppointmentRecord::ctlLocation);
    take(&AppointmentRecord::ctlNotes);
    take(&AppointmentRecord::ctlAppoStart);
    take(&AppointmentRecord::ctlAppoEnd);
    take(&AppointmentRecord::ctlAllday);
    take(&AppointmentRecord::ctlAlarmYN);
    take(&AppointmentRecord::ctlAlarmTime);
    take(&AppointmentRecord::ctlRedoString);
    take(&AppointmentRecord::ctlPrivate);
    if (differences == 0) return {rowId, false};
    r.UserNumber = userNumber;
    const qint64 id = WriteAppointment(isNew ? 0 : rowId, r);
    return {id, id != 0};
}

RuleEnd ComputeRuleEnd(km::Dialogs &ui, int kind, QDate &start, int count, int step, const WeekFlags &weekFlags,
                       int ordinal, int weekday, int month) {
    RuleEnd c;
    const auto clamp = [&ui](const QDate &d) { return ClampUpperDateTelling(ui, d); };
    step = std::max(1, step);
    switch (kind) {
    case RedoWeekly:
    case RedoWorkday: {
        WeekFlags flags = weekFlags;
        if (kind == RedoWorkday) {
            step = 1;
            for (int i = 0; i < 7; ++i)
                flags[static_cast<size_t>(i)] = isWorkday(i);
        }
        // The first day moves to the first ticked weekday on or after it.
        c.end = clamp(WeeklyEndDate(start, count, step, flags));
        c.count = CountWeeklyOccurrences(start, c.end, flags, step);
        break;
    }
    case RedoDaily:
        c.end = clamp(start.addDays(static_cast<qint64>(count - 1) * step));
        c.count = static_cast<int>(start.daysTo(c.end) / step) + 1;
        break;
    case RedoMonthly:
        c.end = start.addMonths((count - 1) * step);
        c.count = count;
        break;
    case RedoMonthlyNth:
    case RedoYearlyNth: {
        const bool yearly = kind == RedoYearlyNth;
        const QString unit = yearly ? QStringLiteral("yyyy") : QStringLiteral("m");
        if (yearly) step = 1;
        const int inMonth = yearly ? month : 0;
        start = NthOccurrenceDate(start, ordinal, weekday, 1, unit, step, inMonth);
        c.end = clamp(NthOccurrenceDate(start, ordinal, weekday, count, unit, step, inMonth));
        c.count = CountNthOccurrences(start, ordinal, weekday, c.end, unit, step);
        break;
    }
    case RedoYearly: {
        c.end = clamp(start.addYears(count - 1));
        const QDate anniversary = MakeDate(c.end.year(), start.month(), start.day());
        c.count = c.end.year() - start.year() + 1 - (c.end < anniversary ? 1 : 0);
        break;
    }
    default:
        c.end = start;
        c.count = 1;
        break;
    }
    return c;
}

const std::array<AlarmEntry, 11> &AlarmEntries(bool allDay) {
    return allDay ? kAllDayLeads : kTimedLeads;
}

// ---- The window ----

frmEditCalendar::frmEditCalendar(const km::SectionContext &context, CalendarState &state)
    : m_ctx(context), m_state(state) {
    Form_Load();
}

void frmEditCalendar::Form_Load() {
    Guard g(m_guard);
    cboRedoWhen.Clear();
    for (const char *t : {"first", "second", "third", "forth", "last!"})
        cboRedoWhen.AddItem(QString::fromLatin1(t));
    cboRedoWeekday.Clear();
    for (int i = 1; i <= 7; ++i) {
        const int qtDay = (AbsoluteWeekday(i) + 5) % 7 + 1; // 1 Sunday .. 7 Saturday as Qt's Monday 1 .. Sunday 7
        cboRedoWeekday.AddItem(m_ctx.locale.dayName(qtDay, QLocale::LongFormat), i);
    }
    cboRedoMonth.Clear();
    for (int m = 1; m <= 12; ++m)
        cboRedoMonth.AddItem(m_ctx.locale.monthName(m, QLocale::LongFormat), m);
}

QString frmEditCalendar::weekdayLetter(int index) const {
    const int qtDay = (AbsoluteWeekday(index + 1) + 5) % 7 + 1;
    return m_ctx.locale.dayName(qtDay, QLocale::ShortFormat).left(1);
}

QString frmEditCalendar::redoDayText() const {
    if (redoKind == RedoMonthly) return QString::number(redoStart.day());
    if (redoKind == RedoYearly)
        return QStringLiteral("%1  %2").arg(redoDate.day()).arg(m_ctx.locale.monthName(redoDate.month()));
    return QString();
}

bool frmEditCalendar::Form_Activate() {
    if (m_loaded) return true;
    m_loaded = true;
    return LoadAppointment();
}

bool frmEditCalendar::LoadAppointment() {
    Guard g(m_guard);
    values = AppointmentRecord{};
    bool fromRow = false;
    if (!m_state.gEditIsNew) {
        const std::optional<AppointmentRecord> row = ReadAppointment(m_state.gEditId);
        if (!row) {
            const km::Answer a = m_ctx.dialogs.message(LanguageUS::MessageText(MsgIdConflict), km::Buttons::YesNo,
                                                       km::Answer::Yes, km::Icon::Question);
            if (a != km::Answer::Yes) {
                close(false);
                return false;
            }
            m_state.gEditIsNew = true;
        } else {
            values = *row;
            fromRow = true;
            if (values.ctlRedoString.isEmpty()) {
                m_state.gEditStart = values.ctlAppoStart;
                m_state.gEditEnd = values.ctlAppoEnd;
            } else {
                // A series opens on the occurrence that was clicked.
                if (m_state.gEditStart == 0) m_state.gEditStart = values.ctlAppoStart;
                m_state.gEditEnd = m_state.gEditStart + values.ctlAppoEnd - values.ctlAppoStart;
            }
        }
    }
    if (!fromRow) {
        qint32 start = m_state.gEditStart;
        qint32 end = m_state.gEditEnd;
        if (start == 0) {
            if (!m_state.calDate.isValid()) {
                const QDateTime now = m_ctx.clock.dateTime();
                const int minute = now.time().hour() * 60 + now.time().minute();
                start = MomentOf(now.date(), minute - minute % 30);
            } else {
                start = MomentOf(m_state.calDate, NewRowMorning);
            }
            end = 0;
        }
        const qint32 nextMidnight = start - MinuteOfDayOfMoment(start) + MinutesPerDay;
        if (end <= start) end = start + NewRowLength;
        end = std::min(end, nextMidnight);
        m_state.gEditStart = start;
        m_state.gEditEnd = end;
        values.ctlAppoStart = start;
        values.ctlAppoEnd = end;
        values.ctlAlarmTime = start;
        values.ctlAllday = m_state.gEditAllDay;
    }

    ctlSubject = values.ctlSubject;
    ctlLocation = values.ctlLocation;
    ctlNotes = values.ctlNotes;
    ctlPrivate = values.ctlPrivate;
    times = {m_state.gEditStart, m_state.gEditEnd};
    dayBase = m_state.gEditStart - MinuteOfDayOfMoment(m_state.gEditStart);
    ctlDate = DateOfMoment(dayBase);
    redoDate = ctlDate;
    savedTimes = {};
    const bool allDay = values.ctlAllday != 0;
    fillAlarmList(allDay, values.ctlAppoStart - values.ctlAlarmTime);
    ctlAlarmYN = values.ctlAlarmYN != 0;
    ctlAllday = allDay;
    if (allDay && !fromRow) {
        // A new all-day row keeps the timed default for when it is unticked.
        savedTimes = times;
        times = {dayBase, dayBase + MinutesPerDay};
    }
    showTimes();

    redoOption = OptionNone;
    redoAlt = 0;
    redoKind = RedoNone;
    if (values.ctlRedoString.isEmpty()) {
        redoStart = redoEnd = ctlDate;
        showRule();
    } else {
        LoadRule(values.ctlRedoString);
    }
    return true;
}

void frmEditCalendar::fillAlarmList(bool allDay, int lead) {
    ctlAlarmAnticipate.Clear();
    for (const AlarmEntry &e : AlarmEntries(allDay))
        ctlAlarmAnticipate.AddItem(QString::fromLatin1(e.text), e.lead);
    setAlarmLead(lead);
}

int frmEditCalendar::selectedLead() const {
    const int i = ctlAlarmAnticipate.ListIndex();
    // A lead the list does not offer (a row from elsewhere) stays as it came.
    return i >= 0 ? ctlAlarmAnticipate.ItemData(i) : m_lead;
}

void frmEditCalendar::LoadRule(const QByteArray &stored) {
    Guard g(m_guard);
    // The editor keeps the seven-byte form alone: a rule with excepted days
    // opens as none, and a save drops it.
    const QByteArray redo = stored.size() == RuleHeaderLength ? stored : QByteArray(RuleHeaderLength, '\0');
    const int b0 = RuleHeaderByte0(redo);
    const int b1 = static_cast<quint8>(redo.at(1));
    const int b2 = static_cast<quint8>(redo.at(2));
    redoOption = OptionNone;
    redoAlt = 0;
    redoKind = RedoNone;
    if (b0 == 0) {
        redoStart = redoEnd = ctlDate;
        showRule();
        return;
    }
    redoKind = b0 & 7;
    static constexpr int kOption[8] = {0, 1, 2, 2, 3, 3, 4, 4};
    static constexpr int kAlt[8] = {0, 0, 0, 1, 0, 1, 0, 1};
    redoOption = kOption[redoKind];
    redoAlt = kAlt[redoKind];
    redoEndOption = (b0 >> 3) & 3;
    redoStart = dateOf16(Days16At(redo, 3));
    redoEnd = dateOf16(Days16At(redo, 5));
    // The rule's day is the row's own: a series opened on a later occurrence
    // keeps the date it has unless the person moves it. A rule given anew is
    // tied to the date shown.
    redoDate = redo == values.ctlRedoString ? DateOfMoment(values.ctlAppoStart) : ctlDate;
    interval = 1;
    interval2 = 1;
    weekFlags = {};
    const auto picksFromDate = [this] {
        ordinalPick = WeekOrdinalOfDate(ctlDate);
        weekdayPick = LocalWeekday(Weekday(ctlDate, 1));
        monthPick = ctlDate.month();
    };
    switch (redoKind) {
    case RedoWeekly:
        for (int bit = 7; bit >= 1; --bit)
            if ((b1 >> bit) & 1) weekFlags[static_cast<size_t>(LocalWeekday(bit) - 1)] = true;
        interval = std::max(1, b2);
        break;
    case RedoDaily:
        interval = std::max(1, b2);
        break;
    case RedoWorkday:
        for (int i = 0; i < 7; ++i)
            weekFlags[static_cast<size_t>(i)] = isWorkday(i);
        break;
    case RedoMonthly:
        picksFromDate();
        interval = std::max(1, b2);
        break;
    case RedoMonthlyNth:
        ordinalPick = std::clamp((b1 & 63) >> 3, 1, 5);
        weekdayPick = LocalWeekday(std::clamp(b1 & 7, 1, 7));
        interval2 = std::max(1, b2);
        break;
    case RedoYearly:
        picksFromDate();
        break;
    case RedoYearlyNth:
        ordinalPick = std::clamp((b1 & 63) >> 3, 1, 5);
        weekdayPick = LocalWeekday(std::clamp(b1 & 7, 1, 7));
        monthPick = std::clamp(b2, 1, 12);
        break;
    default:
        break;
    }
    // The count is not stored: it is derived from the last day again.
    CountFromEnd();
    showRule();
}

void frmEditCalendar::SaveAppointment() {
    if (redoOption == OptionWeekly && std::none_of(weekFlags.begin(), weekFlags.end(), [](bool b) { return b; })) {
        m_ctx.dialogs.message(LanguageUS::MessageText(MsgNoWeekday));
        return;
    }
    if (MinuteOfDayOfMoment(times.start) == 0 && times.end == times.start + MinutesPerDay) ctlAllday = true;
    if (ctlAllday) {
        times.start -= MinuteOfDayOfMoment(times.start);
        times.end = times.start + MinutesPerDay;
    }
    if (redoOption == OptionNone) {
        m_state.gEditStart = times.start;
        m_state.gEditEnd = times.end;
    } else {
        m_state.gEditStart = MomentOf(redoDate, MinuteOfDayOfMoment(times.start));
        m_state.gEditEnd = m_state.gEditStart + (times.end - times.start);
    }
    AppointmentRecord edited = values;
    edited.ctlSubject = ctlSubject;
    edited.ctlLocation = ctlLocation;
    edited.ctlNotes = ctlNotes;
    edited.ctlPrivate = ctlPrivate;
    edited.ctlAppoStart = m_state.gEditStart;
    edited.ctlAppoEnd = m_state.gEditEnd;
    edited.ctlAllday = ctlAllday ? 1 : 0;
    edited.ctlAlarmYN = ctlAlarmYN ? 1 : 0;
    edited.ctlAlarmTime = ctlAlarmYN ? m_state.gEditStart - selectedLead() : m_state.gEditStart;
    edited.ctlRedoString = RedoStringOut();
    const SavedAppointment saved = SaveAppointmentRecord(m_state.gEditIsNew ? 0 : m_state.gEditId,
                                                         m_state.gEditIsNew, values, edited,
                                                         m_ctx.shell.userNumber());
    if (saved.written) {
        m_state.gEditId = saved.id;
        m_state.gEditIsNew = false;
        m_state.gCalendarDirty = true;
    }
    m_state.gGotoDate = DateOfMoment(m_state.gEditStart);
    close(true);
}

void frmEditCalendar::cmdEsc_Click() {
    tmrDuration.setEnabled(false);
    m_state.gCalendarDirty = false;
    m_state.gGotoDate.reset();
    close(false);
}

// ---- Times ----

void frmEditCalendar::showTimes() {
    Guard g(m_guard);
    const auto hm = [this](qint32 moment) {
        const int m = static_cast<int>(moment - dayBase); // 1440 at the next midnight: 24:00
        return std::pair{m / 60, m % 60};
    };
    const auto [sh, sm] = hm(times.start);
    const auto [eh, em] = hm(times.end);
    ctlHH[RowStart] = twoDigits(sh);
    ctlNN[RowStart] = twoDigits(sm);
    ctlHH[RowEnd] = twoDigits(eh);
    ctlNN[RowEnd] = twoDigits(em);
    ctlHH[RowDuration] = QStringLiteral("00");
    ctlNN[RowDuration] = QStringLiteral("00");
    SliderHH[RowStart] = sh;
    SliderNN[RowStart] = sm / 5;
    SliderHH[RowEnd] = eh;
    SliderNN[RowEnd] = em / 5;
    ctlDate = DateOfMoment(dayBase);
    ctlDateEnd = DateOfMoment(times.end);
}

bool frmEditCalendar::ctlHH_Validate(int row, const QString &text) {
    if (m_guard || row < 0 || row > 2) return true;
    bool ok = false;
    int h = text.trimmed().toInt(&ok);
    if (!ok) return false;
    const int cap = row == RowEnd ? 24 : 23;
    if (h > cap) h = cap;
    if (h < 0) h = 0;
    ctlHH[row] = twoDigits(h);
    ctlNN_Validate(row, ctlNN[row]);
    return true;
}

bool frmEditCalendar::ctlNN_Validate(int row, const QString &text) {
    if (m_guard || row < 0 || row > 2) return true;
    bool ok = false;
    int n = text.trimmed().toInt(&ok);
    if (!ok) return false;
    if (n > 59) n = 55;
    if (n < 0) n = 0;
    ctlNN[row] = twoDigits(n);
    // The values take effect, each minute rounded down to five.
    const auto minutesOf = [this](int r) {
        const int m = numberOf(ctlNN[r]);
        return numberOf(ctlHH[r]) * 60 + m - m % 5;
    };
    const qint32 nextMidnight = dayBase + MinutesPerDay;
    const qint32 start = dayBase + minutesOf(RowStart);
    qint32 end = dayBase + minutesOf(RowEnd);
    // The duration row stands at 00:00 until the person types a length into it.
    if (minutesOf(RowDuration) > 0) end = start + minutesOf(RowDuration);
    end = std::min(end, nextMidnight);
    if (end < start) end = start;
    times = {start, end};
    showTimes();
    return true;
}

void frmEditCalendar::SliderHH_Change(int row, int hours) {
    if (m_guard || row < 0 || row > 1) return;
    const qint32 moment = dayBase + hours * 60 + SliderNN[row] * 5;
    const qint32 nextMidnight = dayBase + MinutesPerDay;
    if (row == RowStart) {
        const qint32 duration = times.end - times.start;
        times.start = std::min(moment, nextMidnight);
        times.end = std::min(times.start + duration, nextMidnight);
    } else {
        times.end = std::min(moment, nextMidnight);
    }
    if (times.end <= times.start) times.end = times.start;
    showTimes();
}

void frmEditCalendar::SliderNN_Change(int row, int steps) {
    if (m_guard || row < 0 || row > 1) return;
    SliderNN[row] = steps;
    SliderHH_Change(row, SliderHH[row]);
}

void frmEditCalendar::cmdDuration_MouseDown(int index) {
    m_durationButton = index;
    tmrDuration.setEnabled(true);
    tmrDuration_Timer(); // the first step comes with the press, the rest with the timer
}

void frmEditCalendar::cmdDuration_MouseUp() {
    m_durationButton = -1;
    tmrDuration.setEnabled(false);
}

void frmEditCalendar::tmrDuration_Timer() {
    if (m_durationButton < 0) {
        tmrDuration.setEnabled(false);
        return;
    }
    tmrDuration.rearm();
    ctlHH_Validate(RowStart, ctlHH[RowStart]);
    const int end = static_cast<int>(times.end - dayBase); // minute of the day, 1440 at midnight
    if (m_durationButton == 0) {
        if (times.end != times.start) times.end = std::max(times.start, dayBase + end / 5 * 5 - 5);
    } else if (end < MinutesPerDay) {
        times.end = dayBase + end / 5 * 5 + 5;
    }
    showTimes();
}

void frmEditCalendar::setTimes(qint32 start, qint32 end) {
    dayBase = start - MinuteOfDayOfMoment(start);
    times = {start, std::clamp(end, start, dayBase + MinutesPerDay)};
    showTimes();
}

void frmEditCalendar::ctlAllday_Click(bool ticked) {
    if (m_guard || ticked == ctlAllday) return;
    ctlAllday = ticked;
    if (ticked) {
        savedTimes = times;
        times = {dayBase, dayBase + MinutesPerDay};
    } else if (savedTimes.start != 0 || savedTimes.end != 0) {
        // The timed values come back on the day the event now stands on.
        const qint32 shift = dayBase - (savedTimes.start - MinuteOfDayOfMoment(savedTimes.start));
        times = {savedTimes.start + shift, savedTimes.end + shift};
    } else {
        // A row that came as all-day has no timed values yet: a new row's.
        times = {dayBase + NewRowMorning, dayBase + NewRowMorning + NewRowLength};
    }
    showTimes();
}

void frmEditCalendar::ctlAlarmYN_Click(bool ticked) {
    if (m_guard) return;
    ctlAlarmYN = ticked;
}

void frmEditCalendar::ctlAlarmAnticipate_Click(int index) {
    if (m_guard) return;
    ctlAlarmAnticipate.setListIndex(index);
}

void frmEditCalendar::setAlarmLead(int lead) {
    m_lead = lead;
    ctlAlarmAnticipate.setListIndex(-1);
    for (int i = 0; i < ctlAlarmAnticipate.ListCount(); ++i)
        if (ctlAlarmAnticipate.ItemData(i) == lead) ctlAlarmAnticipate.setListIndex(i);
}

// ---- Dates ----

QDate frmEditCalendar::LimitPickedDate(const QDate &date) {
    const QDate first = DateOfDay(FirstCalendarDay);
    if (date.isValid() && date < first) {
        const QLocale locale = state().locale.value_or(QLocale::system());
        m_ctx.dialogs.message(LanguageUS::MessageText(MsgLowerDateLimit) + QLatin1Char(' ') +
                              locale.toString(first, QLocale::ShortFormat));
        return first;
    }
    return ClampUpperDateTelling(m_ctx.dialogs, date);
}

void frmEditCalendar::ctlDate_Change(const QDate &picked) {
    if (m_guard || !picked.isValid()) return;
    const QDate date = LimitPickedDate(picked);
    const qint64 days = ctlDate.daysTo(date);
    if (times.end >= times.start) {
        const qint32 shift = static_cast<qint32>(days * MinutesPerDay);
        dayBase += shift;
        times.start += shift;
        times.end += shift;
    }
    redoDate = date;
    showTimes();
    if (redoOption != OptionNone && (date < redoStart || date > redoEnd)) ctlDateStartRedo_Change(date);
    showRule();
}

void frmEditCalendar::ctlDateStartRedo_Change(const QDate &picked) {
    if (m_guard || !picked.isValid()) return;
    redoStart = LimitPickedDate(picked);
    if (redoOption == OptionMonthly || redoOption == OptionYearly) {
        ordinalPick = WeekOrdinalOfDate(redoStart);
        weekdayPick = LocalWeekday(Weekday(redoStart, 1));
        redoDate = redoStart;
        if (redoOption == OptionYearly) monthPick = redoStart.month();
    }
    RecalcRedoEnd();
}

void frmEditCalendar::ctlDateEndRedo_Change(const QDate &picked) {
    if (m_guard || !picked.isValid()) return;
    redoEndOption = EndOnDate;
    redoEnd = LimitPickedDate(picked);
    RecalcRedoEnd();
}

// ---- The rule ----

void frmEditCalendar::Redo_Click(int index) {
    if (m_guard || index < 0 || index > 4) return;
    redoOption = index;
    ResetRule();
}

void frmEditCalendar::RedoAlt_Click(int index) {
    if (m_guard || index < 0 || index > 1) return;
    redoAlt = index;
    ResetRule();
}

void frmEditCalendar::ResetRule() {
    static constexpr int kBase[5] = {0, 1, 2, 4, 6};
    redoKind = redoOption == OptionNone ? RedoNone
               : redoOption == OptionWeekly ? RedoWeekly
                                            : kBase[redoOption] + redoAlt;
    if (redoOption == OptionNone) {
        showRule();
        return;
    }
    redoCount = DefaultCount;
    interval = 1;
    interval2 = 1;
    redoEndOption = EndAfterCount;
    redoDate = redoStart = ctlDate;
    weekFlags = {};
    if (redoKind == RedoWeekly) weekFlags[static_cast<size_t>(LocalWeekday(Weekday(ctlDate, 1)) - 1)] = true;
    if (redoKind == RedoWorkday)
        for (int i = 0; i < 7; ++i)
            weekFlags[static_cast<size_t>(i)] = isWorkday(i);
    if (redoOption == OptionMonthly || redoOption == OptionYearly) {
        ordinalPick = WeekOrdinalOfDate(ctlDate);
        weekdayPick = LocalWeekday(Weekday(ctlDate, 1));
        if (redoOption == OptionYearly) monthPick = ctlDate.month();
    }
    RecalcRedoEnd();
}

void frmEditCalendar::RedoEnd_Click(int index) {
    if (m_guard || index < 0 || index > 2) return;
    redoEndOption = index;
    if (index == EndNever) {
        redoEnd = DateOfDay(NoEndPickerDay);
    } else if (index == EndAfterCount) {
        if (redoCount > 10) redoCount = DefaultCount;
    } else {
        if (redoEnd == DateOfDay(NoEndPickerDay)) {
            redoCount = DefaultCount;
            redoEnd = ComputeEnd().end;
        }
        if (redoEnd < redoStart) redoEnd = redoStart;
    }
    RecalcRedoEnd();
}

void frmEditCalendar::RedoWD_Click(int index, bool ticked) {
    if (m_guard || index < 0 || index > 6) return;
    if (!ticked) {
        int count = 0;
        for (bool b : weekFlags)
            count += b ? 1 : 0;
        if (count <= 1 && weekFlags[static_cast<size_t>(index)]) {
            m_ctx.dialogs.message(LanguageUS::MessageText(MsgNoWeekday));
            return; // the box stays ticked
        }
    }
    weekFlags[static_cast<size_t>(index)] = ticked;
    RecalcRedoEnd();
}

void frmEditCalendar::nthWeekdayChanged() {
    // A first day before the chosen weekday of its month is offered the next
    // month (question 151).
    int ordinal = ordinalPick;
    int weekday = AbsoluteWeekday(weekdayPick);
    QDate from = redoStart;
    redoStart = AskNthWeekdayFrom(m_ctx.dialogs, ordinal, weekday, from);
    RecalcRedoEnd();
}

void frmEditCalendar::cboRedoWhen_Click(int index) {
    if (m_guard || index < 0 || index > 4) return;
    ordinalPick = index + 1;
    nthWeekdayChanged();
}

void frmEditCalendar::cboRedoWeekday_Click(int index) {
    if (m_guard || index < 0 || index > 6) return;
    weekdayPick = index + 1;
    nthWeekdayChanged();
}

void frmEditCalendar::cboRedoMonth_Click(int index) {
    if (m_guard || index < 0 || index > 11) return;
    monthPick = index + 1;
    RecalcRedoEnd();
}

QChar frmEditCalendar::FilterKey(const QString &textBefore, QChar key, bool isInterval) {
    if (key == QLatin1Char('\r') || key == QLatin1Char('\n')) return key;
    if (!key.isDigit()) {
        m_ctx.dialogs.message(LanguageUS::MessageText(MsgNotNumber));
        return QLatin1Char('1');
    }
    if (key == QLatin1Char('0') && textBefore.isEmpty()) return QLatin1Char('1');
    if (isInterval && numberOf(textBefore + key) > 255) {
        m_ctx.dialogs.message(LanguageUS::MessageText(MsgOutOfRange));
        return textBefore.isEmpty() ? QLatin1Char('1') : textBefore.back();
    }
    return key;
}

QString frmEditCalendar::filterNumberText(const QString &before, const QString &after, bool isInterval) {
    // One character typed: the key filter decides what it becomes. Anything
    // else (a deletion, a paste) passes each character through the filter.
    if (after.size() == before.size() + 1) {
        qsizetype p = 0;
        while (p < before.size() && before.at(p) == after.at(p))
            ++p;
        if (after.mid(p + 1) == before.mid(p)) {
            const QChar key = FilterKey(before.left(p), after.at(p), isInterval);
            QString out = before;
            if (key != QLatin1Char('\r') && key != QLatin1Char('\n')) out.insert(p, key);
            return out;
        }
    }
    if (after.size() < before.size() && std::all_of(after.begin(), after.end(), [](QChar c) { return c.isDigit(); }))
        return after;
    QString out;
    for (const QChar c : after) {
        const QChar key = FilterKey(out, c, isInterval);
        if (key != QLatin1Char('\r') && key != QLatin1Char('\n')) out.append(key);
    }
    return out;
}

void frmEditCalendar::QQ_Change(int index, const QString &text) {
    if (m_guard || index < 0 || index > 3) return;
    QQ[index] = filterNumberText(QQ[index], text, true);
    // An emptied box leaves the step at 1 until a number stands there.
    const int n = std::max(1, numberOf(QQ[index]));
    (index == 3 ? interval2 : interval) = n;
    RecalcRedoEnd();
}

void frmEditCalendar::occ_Change(const QString &text) {
    if (m_guard) return;
    occ = filterNumberText(occ, text, false);
    redoEndOption = EndAfterCount;
    redoCount = numberOf(occ);
    RecalcRedoEnd();
}

void frmEditCalendar::RecalcRedoEnd() {
    if (redoOption == OptionNone) {
        showRule();
        return;
    }
    if (redoEndOption == EndAfterCount)
        EndFromCount();
    else
        CountFromEnd();
    showRule();
}

frmEditCalendar::Computed frmEditCalendar::ComputeEnd() {
    const int step = redoKind == RedoMonthlyNth ? interval2 : interval;
    const RuleEnd r = ComputeRuleEnd(m_ctx.dialogs, redoKind, redoStart, redoCount, step, weekFlags, ordinalPick,
                                     weekdayPick, monthPick);
    return {r.end, r.count};
}

void frmEditCalendar::EndFromCount() {
    if (redoCount < 1) {
        redoEnd = redoStart;
        redoCount = 1;
        return;
    }
    Computed c = ComputeEnd();
    if (c.count != redoCount) {
        redoEnd = c.end;
        c = ComputeEnd();
        redoCount = c.count;
    }
    if (redoAlt == 1 && redoStart != redoDate) redoDate = redoStart;
    if (c.end != redoEnd) redoEnd = c.end;
}

void frmEditCalendar::CountFromEnd() {
    redoEnd = ClampUpperDateTelling(m_ctx.dialogs, redoEnd);
    if (redoEnd < redoStart) redoEnd = redoStart;
    if (redoStart > redoEnd) {
        redoCount = 1;
        return;
    }
    switch (redoKind) {
    case RedoWeekly:
    case RedoWorkday: {
        WeekFlags flags = weekFlags;
        if (redoKind == RedoWorkday)
            for (int i = 0; i < 7; ++i)
                flags[static_cast<size_t>(i)] = isWorkday(i);
        QDate s = redoStart;
        redoCount = CountWeeklyOccurrences(s, redoEnd, flags, redoKind == RedoWorkday ? 1 : interval);
        break;
    }
    case RedoDaily:
        redoCount = static_cast<int>(redoStart.daysTo(redoEnd) / interval) + 1;
        break;
    case RedoMonthly: {
        const qint64 months = monthsBetween(redoStart, redoEnd) - (redoEnd.day() < redoStart.day() ? 1 : 0);
        redoCount = static_cast<int>(months / interval) + 1;
        break;
    }
    case RedoMonthlyNth:
    case RedoYearlyNth: {
        const bool yearly = redoKind == RedoYearlyNth;
        const QString unit = yearly ? QStringLiteral("yyyy") : QStringLiteral("m");
        const int step = yearly ? 1 : interval2;
        redoCount = CountNthOccurrences(redoStart, ordinalPick, weekdayPick, redoEnd, unit, step);
        if (!m_guard)
            redoEnd = NthOccurrenceDate(redoStart, ordinalPick, weekdayPick, std::max(1, redoCount), unit, step,
                                        yearly ? monthPick : 0);
        break;
    }
    case RedoYearly: {
        const QDate anniversary = MakeDate(redoEnd.year(), redoStart.month(), redoStart.day());
        redoCount = redoEnd.year() - redoStart.year() + 1 - (redoEnd < anniversary ? 1 : 0);
        break;
    }
    default:
        break;
    }
    // Run once more for the first day it settles (the n-th weekday's).
    if (redoKind == RedoMonthlyNth || redoKind == RedoYearlyNth) (void)ComputeEnd();
}

QByteArray frmEditCalendar::RedoStringOut() const {
    if (redoOption == OptionNone) return QByteArray();
    RedoRule r;
    r.kind = redoKind;
    r.endKind = redoEndOption;
    switch (redoKind) {
    case RedoWeekly:
        for (int i = 0; i < 7; ++i)
            if (weekFlags[static_cast<size_t>(i)]) r.b1 += 1 << AbsoluteWeekday(i + 1);
        r.b2 = interval;
        break;
    case RedoDaily:
        r.b2 = interval;
        break;
    case RedoWorkday:
        r.b1 = WorkdayMask;
        break;
    case RedoMonthly:
        r.b1 = redoStart.day();
        r.b2 = interval;
        break;
    case RedoMonthlyNth:
        r.b1 = AbsoluteWeekday(weekdayPick) + 8 * ordinalPick;
        r.b2 = interval2;
        break;
    case RedoYearly:
        r.b1 = redoDate.day();
        r.b2 = redoDate.month();
        break;
    case RedoYearlyNth:
        r.b1 = AbsoluteWeekday(weekdayPick) + 8 * ordinalPick;
        r.b2 = monthPick;
        break;
    default:
        break;
    }
    r.first = days16(redoStart);
    r.last = days16(redoEnd);
    return RedoString(r);
}

void frmEditCalendar::showRule() {
    Guard g(m_guard);
    QQ[0] = QQ[1] = QQ[2] = QString::number(interval);
    QQ[3] = QString::number(interval2);
    occ = QString::number(redoCount);
    cboRedoWhen.setListIndex(ordinalPick - 1);
    cboRedoWeekday.setListIndex(weekdayPick - 1);
    cboRedoMonth.setListIndex(monthPick - 1);
}

} // namespace CALENDAR
