#include "calendar/CalendarText.h"

#include <algorithm>
#include <cctype>

#include <QHash>

#include "calendar/Recurrence.h"
#include "calendar/RulePrompts.h"
#include "calendar/frmEditCalendar.h"
#include "platform/Engine.h"
#include "store/CONVERSION.h"
#include "store/CRY.h"
#include "store/Record_Get.h"
#include "ui/Dialogs.h"

namespace CALENDAR {

namespace {

constexpr int SeriesNoiseLength = RuleHeaderLength;

bool fail(QString *error, const QString &text) {
    if (error) *error = text;
    return false;
}

std::optional<int> wholeNumber(const QString &text, int low, int high) {
    bool ok = false;
    const int n = text.trimmed().toInt(&ok);
    if (!ok || n < low || n > high) return std::nullopt;
    return n;
}

bool inCalendar(const QDate &date) {
    const qint64 d = DayNumber(date);
    return date.isValid() && d >= FirstCalendarDay && d <= LastCalendarDay;
}

std::optional<QDate> calendarDate(const QString &text, QString *error, const QString &what) {
    const QDate d = QDate::fromString(text.trimmed(), QStringLiteral("yyyy-MM-dd"));
    if (!d.isValid()) {
        fail(error, QStringLiteral("%1: not a date of the form yyyy-MM-dd: %2").arg(what, text));
        return std::nullopt;
    }
    if (!inCalendar(d)) {
        fail(error, QStringLiteral("%1: the calendar takes dates from 1925-02-22 to 2069-04-15").arg(what));
        return std::nullopt;
    }
    return d;
}

// 1 Sunday .. 7 Saturday, from a number or the first two letters of an English name.
std::optional<int> weekdayOf(const QString &text) {
    if (const auto n = wholeNumber(text, 1, 7)) return n;
    static const char *names[] = {"su", "mo", "tu", "we", "th", "fr", "sa"};
    const QString t = text.trimmed().toLower();
    if (t.size() < 2) return std::nullopt;
    for (int i = 0; i < 7; ++i)
        if (t.startsWith(QLatin1String(names[i]))) return i + 1;
    return std::nullopt;
}

std::optional<int> ordinalOf(const QString &text) {
    if (const auto n = wholeNumber(text, 1, 5)) return n;
    static const char *names[] = {"first", "second", "third", "fourth", "last"};
    const QString t = text.trimmed().toLower();
    for (int i = 0; i < 5; ++i)
        if (t == QLatin1String(names[i])) return i + 1;
    return std::nullopt;
}

std::optional<int> kindOf(const QString &text) {
    if (const auto n = wholeNumber(text, 0, 7)) return n;
    static const char *names[] = {"none",    "weekly",     "daily",  "workday",
                                  "monthly", "monthlynth", "yearly", "yearlynth"};
    const QString t = text.trimmed().toLower();
    for (int i = 0; i < 8; ++i)
        if (t == QLatin1String(names[i])) return i;
    if (t == QLatin1String("workdays")) return RedoWorkday;
    return std::nullopt;
}

qint16 days16(const QDate &date) {
    return CONVERSION::DateToDays16(QVariant(date));
}

// The last day of count occurrences, as the rule frame reckons it; first
// moves to the series' first occurrence where the frame moves it. Any last
// day after the calendar's is limited to it (the monthly rule's too).
QDate lastDayFromCount(int kind, int b1, int b2, QDate &first, int count) {
    WeekFlags flags{};
    for (int i = 0; i < 7; ++i)
        flags[static_cast<size_t>(i)] = ((b1 >> AbsoluteWeekday(i + 1)) & 1) != 0;
    const int ordinal = (b1 & 63) >> 3;
    const int weekday = LocalWeekday(std::clamp(b1 & 7, 1, 7));
    return ClampUpperDateTelling(km::ui(),
                                 ComputeRuleEnd(km::ui(), kind, first, count, b2, flags, ordinal, weekday, b2).end);
}

std::optional<qint32> momentOfText(const QString &text, QString *error, const QString &what) {
    const QDateTime dt = CONVERSION::ParseDateText(text.trimmed());
    if (!dt.isValid()) {
        fail(error, QStringLiteral("%1: not a moment of the form \"yyyy-MM-dd HH:mm\": %2").arg(what, text));
        return std::nullopt;
    }
    if (!inCalendar(dt.date())) {
        fail(error, QStringLiteral("%1: the calendar takes dates from 1925-02-22 to 2069-04-15").arg(what));
        return std::nullopt;
    }
    return MomentOf(dt.date(), dt.time().hour() * 60 + dt.time().minute());
}

std::optional<bool> truthOf(const QString &text) {
    const QString t = text.trimmed().toLower();
    if (t == QLatin1String("true") || t == QLatin1String("yes") || t == QLatin1String("1") ||
        t == QLatin1String("-1"))
        return true;
    if (t == QLatin1String("false") || t == QLatin1String("no") || t == QLatin1String("0") || t.isEmpty())
        return false;
    return std::nullopt;
}

} // namespace

QString AddUsage() {
    return QStringLiteral(
        "kmd add STORE 12 start=\"yyyy-MM-dd HH:mm\" end=\"yyyy-MM-dd HH:mm\" subject=TEXT "
        "[location=TEXT notes=TEXT private=True allday=1 alarm=LEAD] "
        "[rule=KIND[:P1[:P2[:P3]]][,first=DATE][,last=DATE|,count=N][,endkind=E]"
        "[,except=DATE+DATE...]]  KIND 1 weekly:DAYS:INTERVAL (DAYS Mo+Th), 2 daily:INTERVAL, "
        "3 workday, 4 monthly:DAY:INTERVAL, 5 monthlynth:ORDINAL:WEEKDAY:INTERVAL (5 = last), "
        "6 yearly:DAY:MONTH, 7 yearlynth:ORDINAL:WEEKDAY:MONTH, raw:HEX");
}

std::optional<QByteArray> RuleFromText(const QString &text, const QDate &startDate, QString *error) {
    const QStringList parts = text.split(QLatin1Char(','));
    const QStringList tokens = parts.first().split(QLatin1Char(':'));
    const QString kindText = tokens.first().trimmed().toLower();

    if (kindText == QLatin1String("raw")) {
        const QByteArray hex = tokens.value(1).trimmed().toLatin1();
        const bool hexOnly = std::all_of(hex.begin(), hex.end(),
                                         [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); });
        if (tokens.size() != 2 || parts.size() != 1 || hex.isEmpty() || hex.size() % 2 != 0 || !hexOnly) {
            fail(error,
                 QStringLiteral("rule: raw takes an even number of hexadecimal digits and nothing else"));
            return std::nullopt;
        }
        return QByteArray::fromHex(hex);
    }

    const std::optional<int> kind = kindOf(kindText);
    if (!kind) {
        fail(error, QStringLiteral("rule: unknown kind: %1").arg(tokens.first()));
        return std::nullopt;
    }
    if (*kind == RedoNone) {
        if (tokens.size() > 1 || parts.size() > 1) {
            fail(error, QStringLiteral("rule: kind 0 takes nothing more"));
            return std::nullopt;
        }
        return QByteArray();
    }

    // Options.
    QDate first = startDate, last;
    std::optional<int> count, endKind;
    QList<qint16> excepted;
    for (qsizetype i = 1; i < parts.size(); ++i) {
        const QString option = parts.at(i).trimmed();
        const qsizetype eq = option.indexOf(QLatin1Char('='));
        const QString name = option.left(eq).trimmed().toLower();
        const QString value = eq < 0 ? QString() : option.mid(eq + 1);
        if (name == QLatin1String("first") || name == QLatin1String("last")) {
            const auto d = calendarDate(value, error, QStringLiteral("rule ") + name);
            if (!d) return std::nullopt;
            (name == QLatin1String("first") ? first : last) = *d;
        } else if (name == QLatin1String("count")) {
            count = wholeNumber(value, 1, 32767);
            if (!count) {
                fail(error, QStringLiteral("rule count: a number from 1 on"));
                return std::nullopt;
            }
        } else if (name == QLatin1String("endkind")) {
            endKind = wholeNumber(value, 0, 3);
            if (!endKind) {
                fail(error, QStringLiteral("rule endkind: 0 to 3"));
                return std::nullopt;
            }
        } else if (name == QLatin1String("except")) {
            for (const QString &day : value.split(QLatin1Char('+'))) {
                const auto d = calendarDate(day, error, QStringLiteral("rule except"));
                if (!d) return std::nullopt;
                excepted.append(days16(*d));
            }
        } else {
            fail(error, QStringLiteral("rule: unknown option: %1").arg(option));
            return std::nullopt;
        }
    }
    if (last.isValid() && count) {
        fail(error, QStringLiteral("rule: last= and count= exclude each other"));
        return std::nullopt;
    }

    // Parameters; a missing one comes from the series' first day.
    const auto param = [&](int i) { return tokens.value(i).trimmed(); };
    const auto bad = [&](const QString &what) {
        fail(error, QStringLiteral("rule: %1").arg(what));
        return std::optional<QByteArray>();
    };
    const auto interval = [&](int i) -> std::optional<int> {
        return param(i).isEmpty() ? std::optional<int>(1) : wholeNumber(param(i), 1, 255);
    };
    RedoRule rule;
    rule.kind = *kind;
    switch (*kind) {
    case RedoWeekly: {
        int mask = 0;
        if (param(1).isEmpty()) {
            mask = 1 << Weekday(first, 1);
        } else {
            for (const QString &day : param(1).split(QLatin1Char('+'))) {
                const auto w = weekdayOf(day);
                if (!w) return bad(QStringLiteral("not a weekday: %1").arg(day));
                mask |= 1 << *w;
            }
        }
        const auto n = interval(2);
        if (!n) return bad(QStringLiteral("the interval is 1 to 255"));
        rule.b1 = mask;
        rule.b2 = *n;
        break;
    }
    case RedoDaily: {
        const auto n = interval(1);
        if (!n) return bad(QStringLiteral("the interval is 1 to 255"));
        rule.b2 = *n;
        break;
    }
    case RedoWorkday:
        rule.b1 = WorkdayMask;
        rule.b2 = 0;
        break;
    case RedoMonthly: {
        const auto day = param(1).isEmpty() ? std::optional<int>(first.day()) : wholeNumber(param(1), 1, 31);
        const auto n = interval(2);
        if (!day) return bad(QStringLiteral("the day of month is 1 to 31"));
        if (!n) return bad(QStringLiteral("the interval is 1 to 255"));
        rule.b1 = *day;
        rule.b2 = *n;
        break;
    }
    case RedoMonthlyNth:
    case RedoYearlyNth: {
        const auto ordinal =
            param(1).isEmpty() ? std::optional<int>(WeekOrdinalOfDate(first)) : ordinalOf(param(1));
        const auto weekday = param(2).isEmpty() ? std::optional<int>(Weekday(first, 1)) : weekdayOf(param(2));
        if (!ordinal) return bad(QStringLiteral("the ordinal is 1 to 4, or 5 or last"));
        if (!weekday) return bad(QStringLiteral("not a weekday: %1").arg(param(2)));
        rule.b1 = *weekday + 8 * *ordinal;
        if (*kind == RedoMonthlyNth) {
            const auto n = interval(3);
            if (!n) return bad(QStringLiteral("the interval is 1 to 255"));
            rule.b2 = *n;
        } else {
            const auto month =
                param(3).isEmpty() ? std::optional<int>(first.month()) : wholeNumber(param(3), 1, 12);
            if (!month) return bad(QStringLiteral("the month is 1 to 12"));
            rule.b2 = *month;
        }
        break;
    }
    case RedoYearly: {
        const auto day = param(1).isEmpty() ? std::optional<int>(first.day()) : wholeNumber(param(1), 1, 31);
        const auto month =
            param(2).isEmpty() ? std::optional<int>(first.month()) : wholeNumber(param(2), 1, 12);
        if (!day) return bad(QStringLiteral("the day of month is 1 to 31"));
        if (!month) return bad(QStringLiteral("the month is 1 to 12"));
        rule.b1 = *day;
        rule.b2 = *month;
        break;
    }
    default:
        break;
    }

    if (last.isValid()) {
        rule.endKind = EndOnDate;
    } else if (count) {
        rule.endKind = EndAfterCount;
        last = lastDayFromCount(rule.kind, rule.b1, rule.b2, first, *count);
    } else {
        rule.endKind = EndNever;
        last = DateOfDay(NoEndPickerDay);
    }
    if (endKind) rule.endKind = *endKind;
    if (rule.endKind != EndNever && last < first)
        return bad(QStringLiteral("the last day lies before the first"));
    rule.first = days16(first);
    rule.last = days16(last);
    rule.excepted = excepted;
    return RedoString(rule);
}

std::optional<AppointmentRecord> AppointmentFromAssignments(const QList<QPair<QString, QString>> &assignments,
                                                            int userNumber, QString *error) {
    AppointmentRecord r;
    r.UserNumber = userNumber;
    std::optional<qint32> start, end;
    std::optional<int> lead;
    std::optional<QString> ruleText;
    bool allday = false;
    for (const auto &[key, value] : assignments) {
        const QString k = key.trimmed().toLower();
        if (k == QLatin1String("start")) {
            if (!(start = momentOfText(value, error, k))) return std::nullopt;
        } else if (k == QLatin1String("end")) {
            if (!(end = momentOfText(value, error, k))) return std::nullopt;
        } else if (k == QLatin1String("subject")) {
            r.ctlSubject = value;
        } else if (k == QLatin1String("location")) {
            r.ctlLocation = value;
        } else if (k == QLatin1String("notes")) {
            r.ctlNotes = value;
        } else if (k == QLatin1String("private") || k == QLatin1String("allday")) {
            const auto t = truthOf(value);
            if (!t) {
                fail(error, QStringLiteral("%1: True or False, 1 or 0").arg(k));
                return std::nullopt;
            }
            (k == QLatin1String("private") ? r.ctlPrivate : allday) = *t;
        } else if (k == QLatin1String("alarm")) {
            if (!(lead = wholeNumber(value, -MinutesPerDay, 100 * MinutesPerDay))) {
                fail(error, QStringLiteral("alarm: the lead in minutes before the start"));
                return std::nullopt;
            }
        } else if (k == QLatin1String("rule")) {
            ruleText = value;
        } else {
            fail(error, QStringLiteral("Unknown field of an appointment: %1").arg(key));
            return std::nullopt;
        }
    }
    if (!start) {
        fail(error, QStringLiteral("start= is needed"));
        return std::nullopt;
    }
    if (allday) {
        start = *start - MinuteOfDayOfMoment(*start);
        end = *start + MinutesPerDay;
    }
    if (!end) {
        fail(error, QStringLiteral("end= is needed"));
        return std::nullopt;
    }
    const qint32 nextMidnight = *start - MinuteOfDayOfMoment(*start) + MinutesPerDay;
    if (*end < *start || *end > nextMidnight) {
        fail(error, QStringLiteral("end: from the start to the next midnight at most"));
        return std::nullopt;
    }
    r.ctlAppoStart = *start;
    r.ctlAppoEnd = *end;
    r.ctlAllday = allday ? 1 : 0;
    r.ctlAlarmYN = lead ? 1 : 0;
    r.ctlAlarmTime = *start - lead.value_or(0);
    if (ruleText) {
        const auto redo = RuleFromText(*ruleText, DateOfMoment(*start), error);
        if (!redo) return std::nullopt;
        r.ctlRedoString = *redo;
    }
    return r;
}

QString EditUsage() {
    return QStringLiteral("kmd edit STORE ID [start=\"yyyy-MM-dd HH:mm\"] [end=\"yyyy-MM-dd HH:mm\"] "
                          "[subject=TEXT location=TEXT notes=TEXT private=True allday=1 alarm=LEAD|none] "
                          "[rule=RULE|none]  (an appointment; RULE as kmd add takes it, without except=)");
}

bool ApplyAssignments(frmEditCalendar &editor, const QList<QPair<QString, QString>> &assignments,
                      QString *error) {
    std::optional<qint32> start, end;
    std::optional<bool> allday, priv;
    std::optional<int> lead;
    bool alarmOff = false;
    std::optional<QString> ruleText, subject, location, notes;
    for (const auto &[key, value] : assignments) {
        const QString k = key.trimmed().toLower();
        if (k == QLatin1String("start")) {
            if (!(start = momentOfText(value, error, k))) return false;
        } else if (k == QLatin1String("end")) {
            if (!(end = momentOfText(value, error, k))) return false;
        } else if (k == QLatin1String("subject")) {
            subject = value;
        } else if (k == QLatin1String("location")) {
            location = value;
        } else if (k == QLatin1String("notes")) {
            notes = value;
        } else if (k == QLatin1String("private") || k == QLatin1String("allday")) {
            const auto t = truthOf(value);
            if (!t) return fail(error, QStringLiteral("%1: True or False, 1 or 0").arg(k));
            (k == QLatin1String("private") ? priv : allday) = *t;
        } else if (k == QLatin1String("alarm")) {
            const QString v = value.trimmed().toLower();
            if (v.isEmpty() || v == QLatin1String("none")) {
                alarmOff = true;
                lead.reset();
            } else if (!(lead = wholeNumber(value, -MinutesPerDay, 100 * MinutesPerDay))) {
                return fail(error, QStringLiteral("alarm: the lead in minutes before the start, or none"));
            } else {
                alarmOff = false;
            }
        } else if (k == QLatin1String("rule")) {
            ruleText = value;
        } else {
            return fail(error, QStringLiteral("Unknown field of an appointment: %1").arg(key));
        }
    }

    // The times first, on the day they name; a series follows the date.
    const qint32 oldStart = editor.times.start;
    const qint32 oldEnd = editor.times.end;
    const qint32 newStart = start.value_or(oldStart);
    const qint32 nextMidnight = newStart - MinuteOfDayOfMoment(newStart) + MinutesPerDay;
    qint32 newEnd = std::min(newStart + (oldEnd - oldStart), nextMidnight);
    if (end) {
        if (*end < newStart || *end > nextMidnight)
            return fail(error, QStringLiteral("end: from the start to the next midnight at most"));
        newEnd = *end;
    }
    QByteArray rule; // empty: none
    if (ruleText) {
        const QString t = ruleText->trimmed().toLower();
        if (t != QLatin1String("none") && t != QLatin1String("0")) {
            const auto redo = RuleFromText(*ruleText, DateOfMoment(newStart), error);
            if (!redo) return false;
            rule = *redo;
            if (redo->size() != RuleHeaderLength)
                return fail(error, QStringLiteral("rule: the editor keeps a rule of seven bytes, without "
                                                  "excepted days"));
        }
    }

    if (subject) editor.ctlSubject = *subject;
    if (location) editor.ctlLocation = *location;
    if (notes) editor.ctlNotes = *notes;
    if (priv) editor.ctlPrivate = *priv;
    if (start || end) {
        if (DateOfMoment(newStart) != editor.ctlDate) editor.ctlDate_Change(DateOfMoment(newStart));
        if (editor.ctlAllday && !allday) editor.ctlAllday_Click(false);
        editor.setTimes(newStart, newEnd);
    }
    if (allday) editor.ctlAllday_Click(*allday);
    if (alarmOff) editor.ctlAlarmYN_Click(false);
    if (lead) {
        editor.ctlAlarmYN_Click(true);
        editor.setAlarmLead(*lead);
    }
    if (ruleText) {
        if (rule.isEmpty())
            editor.Redo_Click(frmEditCalendar::OptionNone);
        else
            editor.LoadRule(rule);
    }
    return true;
}

QString OccurrenceLine(qint64 id, qint32 start, const QString &subject) {
    QString oneLine = subject;
    for (QChar &c : oneLine)
        if (c == QLatin1Char('\t') || c == QLatin1Char('\n') || c == QLatin1Char('\r')) c = QLatin1Char(' ');
    const int minute = MinuteOfDayOfMoment(start);
    return QStringLiteral("%1\t%2 %3:%4\t%5")
        .arg(id)
        .arg(DateOfMoment(start).toString(QStringLiteral("yyyy-MM-dd")))
        .arg(minute / 60, 2, 10, QLatin1Char('0'))
        .arg(minute % 60, 2, 10, QLatin1Char('0'))
        .arg(oneLine);
}

QStringList OccurrenceLines(km::StoreDb &store, const QDate &from, const QDate &to, bool showPrivate) {
    struct Shown {
        bool hidden;
        QString subject;
    };
    QHash<qint64, Shown> rows;
    QStringList lines;
    for (const Occurrence &o : CollectOccurrences(store, from, to)) {
        auto it = rows.find(o.id);
        if (it == rows.end()) {
            auto rs = store.OpenRowSet(
                QStringLiteral("SELECT fPK, fEtx FROM tt WHERE fPK=%1 WITH OWNERACCESS OPTION;").arg(o.id),
                km::Snapshot);
            Shown s{true, QString()};
            if (!rs->Eof()) {
                km::SecureBytes clear =
                    CRY::DecryptFieldBytes(rs->GetColumn(QStringLiteral("fEtx")).toByteArray());
                // A record that cannot be read counts as private.
                s.hidden = !showPrivate && Record_Get::RowIsPrivate(clear, 1);
                if (!s.hidden) s.subject = AppointmentFromClear(clear).ctlSubject;
                km::wipe(clear);
            }
            it = rows.insert(o.id, s);
        }
        if (!it->hidden) lines.append(OccurrenceLine(o.id, o.start, it->subject));
    }
    for (Shown &s : rows)
        km::wipe(s.subject);
    return lines;
}

bool CheckAppointmentRow(km::RowSet &row, const QByteArray &clear, QString *why) {
    const AppointmentRecord r = AppointmentFromClear(km::toSecureBytes(clear));
    const qint64 startDay = EpochDay + DayOfMoment(r.ctlAppoStart);

    const auto t1 = StartOfField(row.GetColumn(QStringLiteral("fT1")).toByteArray());
    if (!t1 || *t1 != r.ctlAppoStart) return fail(why, QStringLiteral("fT1 does not hold the start"));

    const auto inBucket = [&](const char *column, qint64 day, int kind) {
        const qint64 v = row.GetColumn(QString::fromLatin1(column)).toLongLong();
        const DateKeyValue k = DateKey(day, kind);
        return v >= k.low && v <= k.high;
    };
    if (!inBucket("fR3", startDay, DayKey))
        return fail(why, QStringLiteral("fR3 is not the key of the start's day"));

    const int sub = row.GetColumn(QStringLiteral("fSub")).toInt();
    if (ClassOfSub(sub) != ClassOfRule(r.ctlRedoString))
        return fail(why, QStringLiteral("fSub %1 is not of the rule's class").arg(sub));

    km::SecureBytes t3 = CRY::DecryptFieldBytes(row.GetColumn(QStringLiteral("fT3")).toByteArray());
    const bool t3Right =
        r.isSeries() ? km::toQByteArray(t3) == r.ctlRedoString : t3.size() == SeriesNoiseLength;
    km::wipe(t3);
    if (!t3Right)
        return fail(why, r.isSeries() ? QStringLiteral("fT3 does not hold the rule")
                                      : QStringLiteral("fT3 is not seven bytes of noise"));

    if (r.isSeries()) {
        const QByteArray &redo = r.ctlRedoString;
        if (redo.size() >= 5 && !inBucket("fR4", EpochDay + Days16At(redo, 3), SeriesStartKey))
            return fail(why, QStringLiteral("fR4 is not the key of the series' first day"));
        if (redo.size() >= 7 && RuleEndKind(redo) != EndNever &&
            !inBucket("fR2", EpochDay + Days16At(redo, 5), SeriesEndKey))
            return fail(why, QStringLiteral("fR2 is not the key of the series' last day"));
    }
    return true;
}

} // namespace CALENDAR
