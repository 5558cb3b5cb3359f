#include "calendar/RulePrompts.h"

#include <QLocale>

#include "calendar/CALENDAR.h"
#include "calendar/Recurrence.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"

namespace CALENDAR {

namespace {

constexpr int MsgUpperDateLimit = 150;
constexpr int MsgNoDateThisMonth = 151;

} // namespace

QDate AskNthWeekdayFrom(km::Dialogs &ui, int &ordinal, int &weekday, QDate &from) {
    for (;;) {
        const NthWeekday found = NthWeekdayInMonth(ordinal, weekday, from);
        if (!found.early) return found.date;
        const km::Answer a = ui.message(LanguageUS::MessageText(MsgNoDateThisMonth), km::Buttons::YesNo,
                                        km::Answer::Yes, km::Icon::Question);
        if (a != km::Answer::Yes) return found.date;
        from = FirstOfMonth(from).addMonths(1);
    }
}

QDate ClampUpperDateTelling(km::Dialogs &ui, const QDate &date) {
    if (!IsPastUpperLimit(date)) return date;
    const QDate limit = ClampUpperDate(date);
    const QLocale locale = state().locale.value_or(QLocale::system());
    ui.message(LanguageUS::MessageText(MsgUpperDateLimit) + QLatin1Char(' ') +
                   locale.toString(limit, QLocale::ShortFormat),
               km::Buttons::OK);
    return limit;
}

} // namespace CALENDAR
