#include <gtest/gtest.h>

#include "CalendarTestSupport.h"
#include "calendar/CalendarText.h"
#include "platform/Engine.h"
#include "store/CRY.h"
#include "support/ScriptedDialogs.h"
#include "support/StoreFixture.h"

using namespace CALENDAR;
using namespace km::test;

namespace {

QByteArray WithEnd(QByteArray rule, int endKind) {
    rule[0] = static_cast<char>((rule[0] & 7) | (endKind << 3));
    return rule;
}

struct RuleCase {
    const char *text;
    QByteArray expected;
};

TEST(RuleFromText, WritesEveryKindWithItsDefaults) {
    WeekLocale us("en_US");
    const RuleCase cases[] = {
        {"weekly:Mo+Th:2,last=2024-12-31",
         Rule(RedoWeekly, (1 << 2) | (1 << 5), 2, "2024-03-05", "2024-12-31")},
        {"1", Rule(RedoWeekly, 1 << 3, 1, "2024-03-05")}, // the start's weekday, no end
        {"weekly:2+5", Rule(RedoWeekly, (1 << 2) | (1 << 5), 1, "2024-03-05")},
        {"daily:3,first=2024-03-01,last=2024-03-31", Rule(RedoDaily, 0, 3, "2024-03-01", "2024-03-31")},
        {"workday", Rule(RedoWorkday, WorkdayMask, 0, "2024-03-05")},
        {"monthly:31:2", Rule(RedoMonthly, 31, 2, "2024-03-05")},
        {"monthly", Rule(RedoMonthly, 5, 1, "2024-03-05")},
        {"monthlynth:last:Fr:2", Rule(RedoMonthlyNth, 6 + 8 * 5, 2, "2024-03-05")},
        {"5", Rule(RedoMonthlyNth, 3 + 8 * 1, 1, "2024-03-05")}, // the first Tuesday
        {"yearly:29:2", Rule(RedoYearly, 29, 2, "2024-03-05")},
        {"yearlynth:4:Th:11", Rule(RedoYearlyNth, 5 + 8 * 4, 11, "2024-03-05")},
        {"7", Rule(RedoYearlyNth, 3 + 8 * 1, 3, "2024-03-05")},
        {"daily,except=2024-03-07+2024-03-09",
         Rule(RedoDaily, 0, 1, "2024-03-05", nullptr, {"2024-03-07", "2024-03-09"})},
        {"daily,last=2024-03-09,endkind=1", WithEnd(Rule(RedoDaily, 0, 1, "2024-03-05", "2024-03-09"), 1)},
        // count=: the last day as the rule dialog computes it, the first day moved where it moves it
        {"weekly:Mo+Th,count=5",
         WithEnd(Rule(RedoWeekly, (1 << 2) | (1 << 5), 1, "2024-03-07", "2024-03-21"), 1)},
        {"daily:2,count=4", WithEnd(Rule(RedoDaily, 0, 2, "2024-03-05", "2024-03-11"), 1)},
        {"monthlynth:1:Tu,count=3", WithEnd(Rule(RedoMonthlyNth, 3 + 8, 1, "2024-03-05", "2024-05-07"), 1)},
        {"none", QByteArray()},
        {"raw:0a01020000ffff", QByteArray("\x0a\x01\x02\x00\x00\xff\xff", 7)},
    };
    for (const RuleCase &c : cases) {
        QString error;
        const auto rule = RuleFromText(QString::fromLatin1(c.text), D("2024-03-05"), &error);
        ASSERT_TRUE(rule) << c.text << ": " << error.toStdString();
        EXPECT_EQ(rule->toHex(), c.expected.toHex()) << c.text;
    }
}

TEST(RuleFromText, RefusesWhatItCannotWrite) {
    const char *bad[] = {"weekly:Xx",
                         "monthly:32",
                         "daily:0",
                         "daily,last=2024-04-01,count=3",
                         "raw:123",
                         "octly",
                         "daily,last=2024-03-01",
                         "daily,color=red",
                         "daily,last=2070-01-01",
                         "yearly:29:13",
                         "monthlynth:6:Fr",
                         "none:1"};
    for (const char *text : bad) {
        QString error;
        EXPECT_FALSE(RuleFromText(QString::fromLatin1(text), D("2024-03-05"), &error)) << text;
        EXPECT_FALSE(error.isEmpty()) << text;
    }
}

TEST(RuleFromText, ACountPastTheCalendarsLastDayEndsThereAndSaysSo) {
    WeekLocale us("en_US");
    ScriptedDialogs ui;
    QString error;
    const auto rule = RuleFromText(QStringLiteral("daily,count=20000"), D("2024-03-05"), &error);
    ASSERT_TRUE(rule) << error.toStdString();
    EXPECT_EQ(rule->toHex(), WithEnd(Rule(RedoDaily, 0, 1, "2024-03-05", "2069-04-15"), 1).toHex());
    EXPECT_EQ(ui.shown, QStringList({QStringLiteral("Upper range limit for dates is 4/15/69")}));

    ASSERT_TRUE(
        RuleFromText(QStringLiteral("daily,count=16478"), D("2024-03-05"), &error)); // ends on 2069-04-15
    EXPECT_EQ(ui.shown.size(), 1);
}

using Assignments = QList<QPair<QString, QString>>;

TEST(AppointmentFromAssignments, TakesEveryField) {
    QString error;
    const auto r = AppointmentFromAssignments({{"start", "2024-03-05 09:30"},
                                               {"end", "2024-03-05 10:15"},
                                               {"subject", "Dentist"},
                                               {"location", "Town"},
                                               {"notes", "bring card"},
                                               {"private", "True"},
                                               {"alarm", "15"},
                                               {"rule", "daily:2"}},
                                              4, &error);
    ASSERT_TRUE(r) << error.toStdString();
    EXPECT_EQ(r->UserNumber, 4);
    EXPECT_EQ(r->ctlAppoStart, MomentOf(D("2024-03-05"), 570));
    EXPECT_EQ(r->ctlAppoEnd, MomentOf(D("2024-03-05"), 615));
    EXPECT_EQ(r->ctlAlarmYN, 1);
    EXPECT_EQ(r->ctlAlarmTime, r->ctlAppoStart - 15);
    EXPECT_TRUE(r->ctlPrivate);
    EXPECT_EQ(r->ctlRedoString, Rule(RedoDaily, 0, 2, "2024-03-05"));
    EXPECT_EQ(r->ctlSubject, QStringLiteral("Dentist"));

    const auto allday =
        AppointmentFromAssignments({{"start", "2024-03-05 09:30"}, {"allday", "1"}}, 1, &error);
    ASSERT_TRUE(allday);
    EXPECT_EQ(allday->ctlAppoStart, MomentOf(D("2024-03-05")));
    EXPECT_EQ(allday->ctlAppoEnd, MomentOf(D("2024-03-06")));
    EXPECT_EQ(allday->ctlAllday, 1);
    EXPECT_EQ(allday->ctlAlarmYN, 0);
    EXPECT_EQ(allday->ctlAlarmTime, allday->ctlAppoStart);

    EXPECT_TRUE(
        AppointmentFromAssignments({{"start", "2024-03-05 23:30"}, {"end", "2024-03-06 00:00"}}, 1, &error));
}

TEST(AppointmentFromAssignments, RefusesTimesTheCalendarCannotHold) {
    const Assignments bad[] = {
        {{"start", "2024-03-05 23:30"}, {"end", "2024-03-06 00:05"}}, // past the next midnight
        {{"start", "2024-03-05 10:00"}, {"end", "2024-03-05 09:00"}}, // before the start
        {{"start", "2024-03-05 10:00"}},                              // no end
        {{"start", "1900-01-01 10:00"}, {"end", "1900-01-01 11:00"}}, // before the calendar
        {{"start", "tomorrow"}, {"end", "2024-03-05 11:00"}},
        {{"start", "2024-03-05 10:00"}, {"end", "2024-03-05 11:00"}, {"colour", "red"}},
        {{"start", "2024-03-05 10:00"}, {"end", "2024-03-05 11:00"}, {"rule", "weekly:Xx"}},
    };
    for (const Assignments &a : bad) {
        QString error;
        EXPECT_FALSE(AppointmentFromAssignments(a, 1, &error)) << a.last().first.toStdString();
        EXPECT_FALSE(error.isEmpty());
    }
}

TEST(OccurrenceLine, OneOccurrenceOneLine) {
    EXPECT_EQ(OccurrenceLine(12, MomentOf(D("2024-03-05"), 9 * 60 + 5), QStringLiteral("a\tb\nc")),
              QStringLiteral("12\t2024-03-05 09:05\ta b c"));
    EXPECT_EQ(OccurrenceLine(7, MomentOf(D("1990-01-01"), 0), QString()),
              QStringLiteral("7\t1990-01-01 00:00\t"));
}

class CalendarTextStore : public StoreFixture {
protected:
    qint64 add(const Assignments &a) {
        QString error;
        const auto r = AppointmentFromAssignments(a, 1, &error);
        EXPECT_TRUE(r) << error.toStdString();
        return r ? WriteAppointment(0, *r) : 0;
    }
    // kmd check's view of a row: the row set on it and its clear payload.
    bool check(qint64 id, QString *why) {
        auto rs = store().OpenRowSet(QStringLiteral("SELECT * FROM tt WHERE fPK=%1").arg(id), km::Snapshot);
        const QByteArray clear =
            km::toQByteArray(CRY::DecryptFieldBytes(rs->GetColumn(QStringLiteral("fEtx")).toByteArray()));
        return CheckAppointmentRow(*rs, clear, why);
    }
    void set(qint64 id, const char *column, const QVariant &value) {
        auto rs = store().OpenRowSet(QStringLiteral("tt"));
        rs->FindFirst(QStringLiteral("fPK=%1").arg(id));
        rs->Edit();
        rs->SetColumn(QString::fromLatin1(column), value);
        rs->Update();
    }
    WeekLocale week{"en_US"};
};

TEST_F(CalendarTextStore, OccurrenceLinesHidePrivateRowsUnlessAsked) {
    const qint64 open =
        add({{"start", "2024-03-05 09:00"}, {"end", "2024-03-05 10:00"}, {"subject", "open"}});
    const qint64 secret = add({{"start", "2024-03-05 08:00"},
                               {"end", "2024-03-05 09:00"},
                               {"subject", "secret"},
                               {"private", "True"},
                               {"rule", "daily,last=2024-03-06"}});
    EXPECT_EQ(OccurrenceLines(store(), D("2024-03-05"), D("2024-03-06"), false),
              QStringList({QStringLiteral("%1\t2024-03-05 09:00\topen").arg(open)}));
    EXPECT_EQ(OccurrenceLines(store(), D("2024-03-05"), D("2024-03-06"), true),
              QStringList({QStringLiteral("%1\t2024-03-05 08:00\tsecret").arg(secret),
                           QStringLiteral("%1\t2024-03-05 09:00\topen").arg(open),
                           QStringLiteral("%1\t2024-03-06 08:00\tsecret").arg(secret)}));
}

TEST_F(CalendarTextStore, CheckFindsEveryDisagreement) {
    const qint64 one = add({{"start", "2024-03-05 09:00"}, {"end", "2024-03-05 10:00"}});
    const qint64 many = add(
        {{"start", "2024-03-05 09:00"}, {"end", "2024-03-05 10:00"}, {"rule", "weekly:Tu,last=2024-06-04"}});
    QString why;
    EXPECT_TRUE(check(one, &why)) << why.toStdString();
    EXPECT_TRUE(check(many, &why)) << why.toStdString();

    struct Damage {
        qint64 id;
        const char *column;
        QVariant value;
        const char *said;
    };
    const Damage damages[] = {
        {one, "fR3", DateKey(D("2024-03-06"), DayKey).point, "fR3"},
        {one, "fSub", 200, "fSub"},
        {one, "fT3", CRY::EncryptField(QByteArray(8, 'x')), "fT3"},
        {one, "fT1", CRY::EncryptField(QByteArray("\x04\x00\x00\x00\x00", 5)), "fT1"},
        {many, "fSub", 100, "fSub"},
        {many, "fT3", CRY::EncryptField(Rule(RedoWeekly, 1 << 3, 1, "2024-03-05")), "fT3"},
        {many, "fR4", DateKey(D("2024-03-04"), SeriesStartKey).point, "fR4"},
        {many, "fR2", DateKey(D("2024-06-05"), SeriesEndKey).point, "fR2"},
    };
    for (const Damage &d : damages) {
        auto before =
            store().OpenRowSet(QStringLiteral("SELECT * FROM tt WHERE fPK=%1").arg(d.id), km::Snapshot);
        const QVariant kept = before->GetColumn(QString::fromLatin1(d.column));
        set(d.id, d.column, d.value);
        EXPECT_FALSE(check(d.id, &why)) << d.column;
        EXPECT_TRUE(why.startsWith(QString::fromLatin1(d.said))) << why.toStdString();
        set(d.id, d.column, kept);
        EXPECT_TRUE(check(d.id, &why)) << why.toStdString();
    }
}

} // namespace
