// The rule dialog's exchanges with the person around the date helpers of
// Recurrence.h, which only compute. The appointment editor's model calls
// these where the person settles a rule:
//
//  - AskNthWeekdayFrom when a monthly or yearly rule on the n-th weekday is
//    chosen or its ordinal or weekday changes: the series' first day becomes
//    the returned day, and the start date the date left in `from`.
//  - ClampUpperDateTelling for every last day the dialog computes or is
//    given (from a count of occurrences, or picked), before it is stored.
//
// The command line reaches the second through CalendarText for count=.
#pragma once

#include <QDate>

namespace km {
class Dialogs;
}

namespace CALENDAR {

// The ordinal-th weekday of from's month as NthWeekdayInMonth finds it. While
// that day lies before `from`, question 151 offers the next month: Yes moves
// `from` to the first of the next month and looks again there, No keeps the
// earlier day. Zero ordinal or weekday are filled in as NthWeekdayInMonth does.
QDate AskNthWeekdayFrom(km::Dialogs &ui, int &ordinal, int &weekday, QDate &from);

// The date, or, for a date after the calendar's last day, that day once
// message 150 has told the person (with the day in the calendar's short form).
QDate ClampUpperDateTelling(km::Dialogs &ui, const QDate &date);

} // namespace CALENDAR
