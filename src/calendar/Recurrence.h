// The recurrence engine: which appointments fall into given days, and when.
// A single row is found by its day key; a series stands once in the table and
// its occurrences are computed on every query, so a year of a daily event
// costs one row. Beside it, the date helpers of the rule dialog.
//
// Everything here is computation: nothing is shown or asked. Where the rule
// dialog has to ask the person about a result (question 151, message 150),
// RulePrompts.h does it around these functions.
//
// Conventions:
//  1. Weekdays are 1 Sunday .. 7 Saturday unless a function says it works in
//     the system's week order (1 = the system's first day of the week).
//  2. The system's first day of the week is read in one place,
//     FirstDayOfWeek(), from the locale (CALENDAR::state().locale, or the
//     system's); WeekStartOf, AbsoluteWeekday, LocalWeekday and ViewRange all
//     use it.
//  3. An occurrence is one Occurrence: the row id and the start moment. A
//     list of them is a vector sorted by start; at an equal start the
//     occurrences of series come before single rows, each group in the order
//     it was read. An occurrence of a series carries the series' row id.
//  4. The rules are computed as the rule strings have always been read,
//     including their known oddities: a monthly rule whose day rolls over
//     carries the roll into the next months, the monthly phase offset for
//     intervals above 2, the yearly step by the month number, and no test of
//     the series' first day or excepted days for monthly rules. Stores written
//     long ago show the same days they always showed.
#pragma once

#include <array>
#include <vector>

#include <QByteArrayView>
#include <QDate>
#include <QString>

namespace km {
class StoreDb;
}

namespace CALENDAR {

// ---- The system's week ----

// The system's first day of the week as a weekday code, 1 Sunday .. 7 Saturday.
int FirstDayOfWeek();
// The weekday of a date counted from firstDayOfWeek (1 Sunday .. 7 Saturday,
// 0: the system's): 1 for that day, 7 for the day before.
int Weekday(const QDate &date, int firstDayOfWeek = 1);
QDate WeekStartOf(const QDate &date, int firstDayOfWeek = 0);
// A day in the system's week order (1 = its first day) as weekday 1 Sunday .. 7 Saturday.
int AbsoluteWeekday(int n);
// A weekday 1 Sunday .. 7 Saturday as its place in the system's week order.
int LocalWeekday(int weekday);

// ---- Views ----

enum ViewMode { ViewDay = 0, ViewWorkWeek = 1, ViewWeek = 2, ViewMonth = 3, ViewYear = 4 };

struct DateRange {
    QDate first;
    QDate last;
};
DateRange ViewRange(const QDate &date, int mode);

struct Occurrence {
    qint64 id = 0;    // fPK of the single row or of the series
    qint32 start = 0; // moment: minutes since the store's epoch

    friend bool operator==(const Occurrence &, const Occurrence &) = default;
};

// All appointments of the days first..last in store, private ones included,
// sorted by start (see convention 3). Reads rows only: the rule strings and
// starts are decrypted with the loaded key table.
std::vector<Occurrence> CollectOccurrences(km::StoreDb &store, const QDate &first, const QDate &last);
// Appends to starts, in date order, the moments (day * 1440 + minuteOfDay) of
// the rule's days within the days of firstMoment..lastMoment.
void ExpandRecurrence(qint32 firstMoment, qint32 lastMoment, int minuteOfDay, QByteArrayView redo,
                      std::vector<qint32> &starts);
// Stable sort by start: at an equal start the occurrences keep the order they
// came in (series before single rows, as CollectOccurrences reads them).
void SortOccurrences(std::vector<Occurrence> &occurrences);

// ---- Date helpers of the rule dialog ----

// The week of the month a date lies in: days 1-7 are 1, 8-14 are 2, ..., 29-31 are 5.
int WeekOrdinalOfDate(const QDate &date);

struct NthWeekday {
    QDate date;
    // The day lies before the date it was looked for from, within that
    // month; the rule dialog then offers the next month (question 151). A
    // last weekday reached because the month has no fifth is never early.
    bool early = false;
};
// The ordinal-th weekday (1 Sunday .. 7 Saturday) of from's month; ordinal 5
// is the last. A weekday or ordinal of 0 is taken from `from` and written back,
// so that the following months of a rule use the same.
NthWeekday NthWeekdayInMonth(int &ordinal, int &weekday, const QDate &from);
// The date of occurrence n of a rule on the ordinal-th weekday (system week
// order) every step units; unit "m" (months) or "yyyy" (years, in month).
QDate NthOccurrenceDate(const QDate &start, int ordinal, int weekday, int n, const QString &unit, int step,
                        int month);
int CountNthOccurrences(const QDate &start, int ordinal, int weekday, const QDate &end, const QString &unit,
                        int step);
// flags in the system's week order. start moves to its first flagged day.
using WeekFlags = std::array<bool, 7>;
int CountWeeklyOccurrences(QDate &start, const QDate &end, const WeekFlags &flags, int interval);
QDate WeeklyEndDate(QDate &start, int count, int interval, const WeekFlags &flags);
// Whether a date lies after the calendar's last day (LastCalendarDay).
bool IsPastUpperLimit(const QDate &date);
// The date, or the calendar's last day for a date after it.
QDate ClampUpperDate(const QDate &date);
QDate FirstOfMonth(const QDate &date);
QDate LastOfMonth(const QDate &date);

} // namespace CALENDAR
