#include "calendar/Recurrence.h"

#include <algorithm>

#include <QLocale>

#include "calendar/CALENDAR.h"
#include "platform/Engine.h"
#include "store/CRY.h"

namespace CALENDAR {

namespace {

// A rule's own days never reach this far; it stands for "no last day".
constexpr qint32 NoLastDay = 65536;
// Bounds every stepping loop, whatever a foreign rule string holds.
constexpr int MaxSteps = 100000;

int floorMod7(int a) {
    return ((a % 7) + 7) % 7;
}

QLocale calendarLocale() {
    return state().locale.value_or(QLocale::system());
}

// Epoch days (those of moments and of the rule strings) and their dates.
QDate dateOf(qint32 epochDay) {
    return DateOfDay(static_cast<qint64>(EpochDay) + epochDay);
}
qint32 epochDayOf(const QDate &date) {
    return static_cast<qint32>(DayNumber(date) - EpochDay);
}

int monthIndex(const QDate &d) {
    return d.year() * 12 + d.month() - 1;
}

// The index of a date's weekday in the system's week order, 0 to 6.
int localIndex(const QDate &date) {
    return LocalWeekday(Weekday(date, 1)) - 1;
}

} // namespace

// ---- The system's week ----

int FirstDayOfWeek() {
    // Qt counts Monday 1 .. Sunday 7; the store counts Sunday 1 .. Saturday 7.
    return static_cast<int>(calendarLocale().firstDayOfWeek()) % 7 + 1;
}

int Weekday(const QDate &date, int firstDayOfWeek) {
    if (firstDayOfWeek == 0) firstDayOfWeek = FirstDayOfWeek();
    const int sunday1 = date.dayOfWeek() % 7 + 1;
    return floorMod7(sunday1 - firstDayOfWeek) + 1;
}

QDate WeekStartOf(const QDate &date, int firstDayOfWeek) {
    return date.addDays(1 - Weekday(date, firstDayOfWeek));
}

int AbsoluteWeekday(int n) {
    return floorMod7(n - 1 + FirstDayOfWeek() - 1) + 1;
}

int LocalWeekday(int weekday) {
    return floorMod7(weekday - FirstDayOfWeek()) + 1;
}

// ---- Views ----

DateRange ViewRange(const QDate &date, int mode) {
    switch (mode) {
    case ViewDay:
        return {date, date};
    case ViewWorkWeek: {
        const QDate first = date.addDays(1 - Weekday(date, 2)); // Monday as 1
        return {first, first.addDays(4)};
    }
    case ViewWeek: {
        const QDate first = date.addDays(1 - Weekday(date, 0));
        return {first, first.addDays(6)};
    }
    case ViewMonth: {
        const QDate f = FirstOfMonth(date);
        const QDate first = f.addDays(1 - Weekday(f, 0));
        return {first, first.addDays(41)}; // the 42 cells of the month grid
    }
    default:
        return {QDate(date.year(), 1, 1), QDate(date.year() + 1, 1, 1).addDays(-1)};
    }
}

std::vector<Occurrence> CollectOccurrences(km::StoreDb &store, const QDate &first, const QDate &last) {
    std::vector<Occurrence> out;
    const qint32 firstMoment = MomentOf(first);
    const qint32 lastMoment = MomentOf(last, MinutesPerDay - 1);

    // The store indexes each column alone and keeps no statistics, so the
    // engine would walk every appointment of the section through the fSec
    // index and fetch each row. "+0" keeps it off that index (and, for the
    // series, off the key indexes, which hold single rows too): the series
    // are found through fSub, the single rows of the days through fR3.

    // Series that do not start after the range and do not end before it,
    // told apart by their keys alone; the bucket bounds take in the bordering
    // days, which the expansion then drops. They come in fSub order and are
    // expanded in fPK order.
    {
        const qint32 h = DateKey(last, SeriesStartKey).high;
        const qint32 l = DateKey(first, SeriesEndKey).low;
        auto rows =
            store.OpenRowSet(QStringLiteral("SELECT fPK, fT1, fT3 FROM tt WHERE (fSec+0=12) AND (fSub >= 148) AND "
                                            "((fR4+0 < %1 AND fR2+0 > %2)) WITH OWNERACCESS OPTION;")
                                 .arg(h)
                                 .arg(l),
                             km::Snapshot);
        struct Series {
            qint64 id;
            QByteArray start, rule; // field forms, still encrypted
        };
        std::vector<Series> series;
        for (; !rows->Eof(); rows->MoveNext())
            series.push_back({rows->GetColumn(QStringLiteral("fPK")).toLongLong(),
                              rows->GetColumn(QStringLiteral("fT1")).toByteArray(),
                              rows->GetColumn(QStringLiteral("fT3")).toByteArray()});
        std::sort(series.begin(), series.end(), [](const Series &a, const Series &b) { return a.id < b.id; });
        std::vector<qint32> starts;
        for (const Series &one : series) {
            const qint32 start = StartOfField(one.start).value_or(0);
            km::SecureBytes rule = CRY::DecryptFieldBytes(one.rule);
            starts.clear();
            ExpandRecurrence(firstMoment, lastMoment, MinuteOfDayOfMoment(start),
                             QByteArrayView(reinterpret_cast<const char *>(rule.data()),
                                            static_cast<qsizetype>(rule.size())),
                             starts);
            km::wipe(rule);
            if (starts.empty()) continue;
            const qint64 id = one.id;
            for (const qint32 s : starts)
                out.push_back({id, s});
        }
    }

    // Single rows of the days, in day and rank order.
    {
        const DateKeyValue lo = DateKey(first, DayKey);
        const DateKeyValue hi = DateKey(last, DayKey);
        const qint64 width = static_cast<qint64>(hi.high) - hi.low + 1;
        auto rows =
            store.OpenRowSet(QStringLiteral("SELECT fPK, fT1 FROM tt WHERE ((fSec+0=12) AND (fSub < 148) AND (fR3 "
                                            "Between %1 And %2)) ORDER BY Int([fR3]/%3), fR1, fPK WITH "
                                            "OWNERACCESS OPTION;")
                                 .arg(lo.low)
                                 .arg(hi.high)
                                 .arg(width),
                             km::Snapshot);
        for (; !rows->Eof(); rows->MoveNext())
            out.push_back({rows->GetColumn(QStringLiteral("fPK")).toLongLong(),
                           StartOfField(rows->GetColumn(QStringLiteral("fT1")).toByteArray()).value_or(0)});
    }
    SortOccurrences(out);
    return out;
}

void ExpandRecurrence(qint32 firstMoment, qint32 lastMoment, int minuteOfDay, QByteArrayView redo,
                      std::vector<qint32> &starts) {
    if (redo.size() < RuleHeaderLength || redo.size() % 2 == 0) return;
    const int b0 = RuleHeaderByte0(redo);
    if (b0 == 0) return;
    const int b1 = static_cast<unsigned char>(redo[1]);
    int b2 = static_cast<unsigned char>(redo[2]);

    std::vector<qint32> excepted;
    for (qsizetype pos = RuleHeaderLength; pos + 1 < redo.size(); pos += 2)
        excepted.push_back(Days16At(redo, pos));
    const auto isExcepted = [&](qint32 d) {
        return std::find(excepted.begin(), excepted.end(), d) != excepted.end();
    };

    const qint32 seriesFirst = Days16At(redo, 3);
    qint32 seriesLast = 0; // both end bits set: never written, and nothing is shown
    switch (b0 & 24) {
    case 0:
        seriesLast = NoLastDay;
        break;
    case 8:
    case 16:
        seriesLast = Days16At(redo, 5);
        break;
    default:
        break;
    }
    const qint32 rangeFirst = DayOfMoment(firstMoment);
    const qint32 rangeLast = DayOfMoment(lastMoment);
    if (seriesLast < rangeFirst || seriesFirst > rangeLast) return;

    const auto accept = [&](qint32 d) { starts.push_back(d * MinutesPerDay + minuteOfDay); };

    switch (b0 & 7) {
    case RedoWeekly:
    case RedoWorkday: {
        std::array<bool, 8> flag{}; // by weekday 1 Sunday .. 7 Saturday
        if ((b0 & 7) == RedoWorkday) {
            for (int i = 2; i <= 6; ++i)
                flag[static_cast<size_t>(i)] = true;
            b2 = 1;
        } else {
            for (int i = 1; i <= 7; ++i)
                flag[static_cast<size_t>(i)] = (b1 >> i) & 1;
        }
        if (b2 == 0) return; // no interval: a rule no editor writes
        const qint32 seriesWeek = epochDayOf(WeekStartOf(dateOf(seriesFirst), 0));
        const qint32 rangeWeek = epochDayOf(WeekStartOf(dateOf(rangeFirst), 0));
        qint32 firstActive = seriesWeek;
        if (seriesFirst <= rangeFirst) {
            // The first week of the series' rhythm on or after the range's week.
            const qint32 g = (rangeWeek - seriesWeek) / 7;
            firstActive = rangeWeek + (7 * (b2 - g % b2)) % (7 * b2);
        }
        const int sw = Weekday(dateOf(seriesWeek), 1);
        for (qint32 w = firstActive; w <= rangeLast; w += 7 * b2) {
            for (qint32 d = w; d <= w + 6; ++d) {
                const int weekday = (sw + d - firstActive - 1) % 7 + 1;
                if (flag[static_cast<size_t>(weekday)] && d >= seriesFirst && d >= rangeFirst &&
                    d <= rangeLast && d <= seriesLast && !isExcepted(d))
                    accept(d);
            }
        }
        break;
    }
    case RedoDaily: {
        if (b2 == 0) return;
        qint32 d = seriesFirst;
        if (seriesFirst <= rangeFirst) d = rangeFirst + (b2 - (rangeFirst - seriesFirst) % b2) % b2;
        for (; d <= rangeLast; d += b2) {
            if (d < rangeFirst || d > seriesLast || isExcepted(d)) continue;
            accept(d);
        }
        break;
    }
    case RedoMonthly: {
        if (b2 == 0) return;
        const QDate cursor = dateOf(rangeFirst);
        const QDate sf = dateOf(seriesFirst);
        // The day comes from the series' first day; header byte 1 is only written.
        const int dayOfMonth = sf.day();
        const int g = monthIndex(cursor) - monthIndex(sf);
        // Added as it is, though the way to the series' next month would be
        // b2 minus it: the two agree for intervals of 1 and 2 only.
        const int k = (g % b2) % b2;
        QDate next = cursor.addMonths(k);
        for (int step = 0; step < MaxSteps; ++step) {
            const qint32 d = epochDayOf(MakeDate(next.year(), next.month(), dayOfMonth));
            if (d >= rangeFirst) {
                if (d > rangeLast) break;
                if (d <= seriesLast) accept(d);
            }
            if (d < rangeFirst && d > rangeLast) break;
            // From the day as it fell: a day that rolled into the next month
            // carries its roll on.
            next = dateOf(d).addMonths(b2);
        }
        break;
    }
    case RedoMonthlyNth: {
        if (b2 == 0) return;
        int ordinal = (b1 & 63) >> 3;
        int weekday = b1 & 7;
        QDate cursor = dateOf(rangeFirst);
        int dayOfMonth = 1;
        if (!(seriesFirst <= rangeFirst || seriesFirst >= rangeLast)) {
            cursor = dateOf(seriesFirst);
            dayOfMonth = cursor.day();
        }
        const int g = monthIndex(cursor) - monthIndex(dateOf(seriesFirst));
        const int k = (g % b2) % b2;
        QDate next = cursor.addMonths(k);
        for (int step = 0; step < MaxSteps; ++step) {
            const QDate c = MakeDate(next.year(), next.month(), dayOfMonth);
            const qint32 d = epochDayOf(NthWeekdayInMonth(ordinal, weekday, c).date);
            if (!(d < seriesFirst || d < rangeFirst)) {
                if (d > rangeLast) break;
                if (d <= seriesLast) accept(d);
            }
            if (d > rangeLast) break;
            next = dateOf(d).addMonths(b2);
            dayOfMonth = 1;
        }
        break;
    }
    case RedoYearly: {
        const QDate cursor = dateOf(rangeFirst);
        int year = cursor.year();
        const QDate c0 = MakeDate(year, b2, b1);
        if (c0 < cursor)
            ++year;
        else if (c0 > DateOfMoment(lastMoment))
            --year;
        int month = b2;
        for (int step = 0; step < MaxSteps; ++step) {
            const qint32 d = epochDayOf(MakeDate(year, month, b1));
            if (d >= rangeFirst) {
                if (d > rangeLast) break;
                if (d <= seriesLast) accept(d);
            }
            if (d > rangeLast || b2 == 0) break;
            // The step is header byte 2, the month number, not one year: within
            // any range of up to a year the first candidate is the only one.
            const QDate next = dateOf(d).addYears(b2);
            year = next.year();
            month = next.month();
        }
        break;
    }
    case RedoYearlyNth: {
        int ordinal = (b1 & 63) >> 3;
        int weekday = b1 & 7;
        const QDate cursor = (seriesFirst <= rangeFirst || seriesFirst >= rangeLast) ? dateOf(rangeFirst)
                                                                                     : dateOf(seriesFirst);
        QDate c = MakeDate(cursor.year(), b2, 1);
        for (int step = 0; step < MaxSteps; ++step) {
            const qint32 d = epochDayOf(NthWeekdayInMonth(ordinal, weekday, c).date);
            if (d >= rangeFirst) {
                if (d > rangeLast) break;
                if (d <= seriesLast) accept(d);
            }
            if (d > rangeLast) break;
            c = MakeDate(dateOf(d).addYears(1).year(), b2, 1);
        }
        break;
    }
    default:
        break;
    }
}

void SortOccurrences(std::vector<Occurrence> &occurrences) {
    std::stable_sort(occurrences.begin(), occurrences.end(),
                     [](const Occurrence &a, const Occurrence &b) { return a.start < b.start; });
}

// ---- Date helpers of the rule dialog ----

int WeekOrdinalOfDate(const QDate &date) {
    return (date.day() - 1) / 7 + 1;
}

NthWeekday NthWeekdayInMonth(int &ordinal, int &weekday, const QDate &from) {
    if (weekday == 0) weekday = Weekday(from, 1);
    if (ordinal == 0) ordinal = WeekOrdinalOfDate(from);
    const int w1 = Weekday(FirstOfMonth(from), 1);
    const int dayNumber = (weekday + 7 - w1) % 7 + 1 + (ordinal - 1) * 7;
    const QDate c = MakeDate(from.year(), from.month(), dayNumber);
    // Past the month's end: the ordinal 5 means the last.
    if (monthIndex(c) > monthIndex(from)) return {c.addDays(-7), false};
    return {c, c < from};
}

QDate NthOccurrenceDate(const QDate &start, int ordinal, int weekday, int n, const QString &unit, int step,
                        int month) {
    if (step == 0) step = 1;
    const bool years = unit == QLatin1String("yyyy");
    QDate t = years ? start.addYears((n - 1) * step) : start.addMonths((n - 1) * step);
    if (years) {
        if (month == 0) month = t.month();
        if (month < t.month()) t = t.addYears(1);
        t = MakeDate(t.year(), month, t.day());
    }
    int w = weekday >= 1 && weekday <= 7 ? AbsoluteWeekday(weekday) : 0;
    QDate r = NthWeekdayInMonth(ordinal, w, t).date;
    if (r.month() != t.month()) r = years ? r.addYears(1) : r.addMonths(1);
    return r;
}

int CountNthOccurrences(const QDate &start, int ordinal, int weekday, const QDate &end, const QString &unit,
                        int step) {
    if (step == 0) step = 1;
    const bool years = unit == QLatin1String("yyyy");
    const int units = years ? end.year() - start.year() : monthIndex(end) - monthIndex(start);
    const int n = units / step + 1;
    const QDate r = NthOccurrenceDate(start, ordinal, weekday, n, unit, step, 0);
    if (r > end) {
        if (!years) return n - 1;
        return r.month() != end.month() ? n - 1 : n;
    }
    return n;
}

int CountWeeklyOccurrences(QDate &start, const QDate &end, const WeekFlags &flags, int interval) {
    const int perWeek = static_cast<int>(std::count(flags.begin(), flags.end(), true));
    for (int k = 0; k <= 6; ++k) {
        if (flags[static_cast<size_t>(localIndex(start.addDays(k)))]) {
            if (k >= 1) start = start.addDays(k);
            break;
        }
    }
    if (interval < 1) interval = 1;
    const qint64 days = start.daysTo(end) + 1;
    const qint64 period = 7 * static_cast<qint64>(interval);
    qint64 count = (days / period) * perWeek;
    if (days % period > 0) {
        const int a = localIndex(start);
        int b = localIndex(end);
        if (b < a) b += 7;
        // With an interval above 1 this rest may count days of a week that
        // is not active.
        for (int i = a; i <= b; ++i)
            if (flags[static_cast<size_t>(i % 7)]) ++count;
    }
    return static_cast<int>(count);
}

QDate WeeklyEndDate(QDate &start, int count, int interval, const WeekFlags &flags) {
    const int perWeek = static_cast<int>(std::count(flags.begin(), flags.end(), true));
    if (perWeek == 0 || count < 1) return start;
    if (interval < 1) interval = 1;
    while (!flags[static_cast<size_t>(localIndex(start))])
        start = start.addDays(1);
    const int i0 = localIndex(start);

    qint64 days = 0;
    int remaining = count;
    bool done = false;
    for (int i = i0; i <= 6 && !done; ++i) {
        ++days;
        if (flags[static_cast<size_t>(i)] && --remaining == 0) done = true;
    }
    if (!done) {
        const int full = remaining / perWeek;
        days += static_cast<qint64>(full) * interval * 7;
        remaining -= full * perWeek;
        if (remaining > 0) {
            days += static_cast<qint64>(interval - 1) * 7;
            for (int i = 0; i <= 6; ++i) {
                ++days;
                if (flags[static_cast<size_t>(i)] && --remaining == 0) break;
            }
        } else {
            // The last full week ends on its last flagged day.
            for (int i = 6; i >= 0; --i) {
                if (flags[static_cast<size_t>(i)]) break;
                --days;
            }
        }
    }
    return start.addDays(days - 1);
}

bool IsPastUpperLimit(const QDate &date) {
    return DayNumber(date) > LastCalendarDay;
}

QDate ClampUpperDate(const QDate &date) {
    return IsPastUpperLimit(date) ? DateOfDay(LastCalendarDay) : date;
}

QDate FirstOfMonth(const QDate &date) {
    return QDate(date.year(), date.month(), 1);
}

QDate LastOfMonth(const QDate &date) {
    return QDate(date.year(), date.month(), date.daysInMonth());
}

} // namespace CALENDAR
