// Shared helpers of the calendar tests: dates from text, rule strings from
// their parts, and the week's locale set for the length of a test.
#pragma once

#include <gtest/gtest.h>

#include <ostream>

#include <QDate>
#include <QLocale>
#include <QStringList>

#include "calendar/CALENDAR.h"
#include "calendar/Recurrence.h"

namespace CALENDAR {

inline void PrintTo(const Occurrence &o, std::ostream *os) {
    *os << "{" << o.id << ", " << DateOfMoment(o.start).toString(Qt::ISODate).toStdString() << " "
        << MinuteOfDayOfMoment(o.start) << "}";
}

} // namespace CALENDAR

namespace km::test {

inline QDate D(const char *text) {
    return QDate::fromString(QString::fromLatin1(text), QStringLiteral("yyyy-MM-dd"));
}

inline qint16 Day16(const char *text) {
    return static_cast<qint16>(CALENDAR::DayNumber(D(text)) - CALENDAR::EpochDay);
}

// A rule string; without a last day the rule has no end (and carries 2050-01-01).
inline QByteArray Rule(int kind, int b1, int b2, const char *first, const char *last = nullptr,
                       const QStringList &excepted = {}) {
    CALENDAR::RedoRule r;
    r.kind = kind;
    r.endKind = last ? CALENDAR::EndOnDate : CALENDAR::EndNever;
    r.b1 = b1;
    r.b2 = b2;
    r.first = Day16(first);
    r.last = last ? Day16(last) : Day16("2050-01-01");
    for (const QString &e : excepted)
        r.excepted.append(Day16(e.toLatin1().constData()));
    return CALENDAR::RedoString(r);
}

// The days a rule gives within from..to, as "yyyy-MM-dd".
inline QStringList Expand(const QByteArray &rule, const char *from, const char *to) {
    std::vector<qint32> starts;
    CALENDAR::ExpandRecurrence(CALENDAR::MomentOf(D(from)), CALENDAR::MomentOf(D(to), 1439), 0, rule, starts);
    QStringList out;
    for (const qint32 s : starts)
        out << CALENDAR::DateOfMoment(s).toString(QStringLiteral("yyyy-MM-dd"));
    return out;
}

// Sets the locale the week is read from for the life of the object.
class WeekLocale {
public:
    explicit WeekLocale(const char *name) { CALENDAR::state().locale = QLocale(QString::fromLatin1(name)); }
    ~WeekLocale() { CALENDAR::state().locale.reset(); }
};

} // namespace km::test
