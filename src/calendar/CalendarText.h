// The calendar in plain text, for the command line: an appointment from
// name=value assignments, a rule from its short written form, occurrence
// lines, and the consistency check of an appointment row.
//
// The written form of a rule:
//
//   KIND[:P1[:P2[:P3]]][,first=DATE][,last=DATE | ,count=N][,endkind=E][,except=DATE+DATE...]
//
//   KIND (number or name)     parameters (one left out comes from the series' first day)
//   0 none                    no rule: a single appointment
//   1 weekly                  DAYS[:INTERVAL]             DAYS Su+Mo+Tu+We+Th+Fr+Sa, or 1..7 (1 Sunday)
//   2 daily                   INTERVAL                    every n days
//   3 workday                 (none)                      Monday to Friday
//   4 monthly                 DAY[:INTERVAL]              day of month, every n months
//   5 monthlynth              ORDINAL[:WEEKDAY[:INTERVAL]] ORDINAL 1..4, 5 or last; WEEKDAY Su..Sa or 1..7
//   6 yearly                  DAY[:MONTH]
//   7 yearlynth               ORDINAL[:WEEKDAY[:MONTH]]
//   raw:HEX                   the rule string's bytes in hexadecimal, taken as they are
//
//   first=   the series' first day (default: the start's date)
//   last=    end on that date (end kind 2); count= after n occurrences (end
//            kind 1, the last day computed as the editor computes it); neither:
//            no end date (end kind 0, last day 2050-01-01 as the editor stores it)
//   endkind= the end kind bits as given (0 to 3), overriding the above
//   except=  excepted days
//   DATE is yyyy-MM-dd. Intervals are 1 to 255.
//
// Example: rule=weekly:Mo+Th:2,last=2024-12-31   rule=monthlynth:last:Fr   rule=yearly:29:2,count=8
#pragma once

#include <optional>

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

#include "calendar/CALENDAR.h"

namespace km {
class RowSet;
class StoreDb;
} // namespace km

namespace CALENDAR {

// The usage of the calendar's half of "kmd add".
QString AddUsage();

// The rule string of a written rule for a series starting on startDate;
// empty for kind 0. Nothing, and the reason in error, for a malformed text.
std::optional<QByteArray> RuleFromText(const QString &text, const QDate &startDate, QString *error);

// An appointment from the assignments start=, end=, subject=, location=,
// notes=, private=, allday=, alarm=LEAD (minutes before the start) and rule=.
std::optional<AppointmentRecord> AppointmentFromAssignments(const QList<QPair<QString, QString>> &assignments,
                                                            int userNumber, QString *error);

class frmEditCalendar;

// The usage of the calendar's half of "kmd edit".
QString EditUsage();

// The assignments of "kmd edit" (the names "kmd add" takes) applied to an
// editor that has loaded the row, each through the control it names: start=
// moves the date as the date picker does (a series follows) and keeps the
// length unless end= is given; allday= ticks or unticks the box; alarm=LEAD
// ticks the alarm with that lead (alarm=none unticks it); rule= replaces the
// rule as the rule frame would show it, rule=none removes it. False, and the
// reason in error, for a bad field or value; then the editor is not to be
// saved.
bool ApplyAssignments(frmEditCalendar &editor, const QList<QPair<QString, QString>> &assignments,
                      QString *error);

// "fPK<TAB>yyyy-MM-dd HH:mm<TAB>subject"; tabs and line breaks of the
// subject become blanks, so that one occurrence stays one line.
QString OccurrenceLine(qint64 id, qint32 start, const QString &subject);
// The occurrences of the days from..to of store in the engine's order;
// private rows only with showPrivate.
QStringList OccurrenceLines(km::StoreDb &store, const QDate &from, const QDate &to, bool showPrivate);

// A calendar row's derived columns against its record (clear: the decrypted
// fEtx): fT1 and fR3 hold the start, fSub's class is the rule's, fT3 holds
// the rule or seven noise bytes, and a series' fR4 and fR2 are the keys of
// its first and last day.
bool CheckAppointmentRow(km::RowSet &row, const QByteArray &clear, QString *why);

} // namespace CALENDAR
