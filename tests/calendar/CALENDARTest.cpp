#include <gtest/gtest.h>

#include "CalendarTestSupport.h"
#include "calendar/CALENDAR.h"
#include "calendar/Recurrence.h"
#include "platform/Engine.h"
#include "store/CRY.h"
#include "store/Record_Put.h"
#include "support/ScriptedDialogs.h"
#include "support/StoreFixture.h"

using namespace CALENDAR;
using namespace km::test;

namespace {

// ---- Keys and rule strings (no store) ----

TEST(DateKey, RoundTripsAndKeepsTheOrderOfDaysForEveryKind) {
    const int kinds[] = {DayKey, SeriesStartKey, SeriesEndKey};
    const qint32 widths[] = {71049, 73526, 81578};
    // The first and last calendar days lie just beyond some kinds' ranges (and
    // land in their end buckets): the days round-tripped are those inside all three.
    const char *dates[] = {"1925-02-23", "1970-01-01", "1986-07-14", "1986-07-15",
                           "1989-04-27", "1989-04-28", "1997-03-19", "1997-03-20",
                           "1997-03-21", "2000-02-29", "2024-12-31", "2069-04-14"};
    for (int i = 0; i < 3; ++i) {
        const int kind = kinds[i];
        EXPECT_EQ(KeyWidth(kind), widths[i]);
        for (const char *text : dates) {
            const QDate d = D(text);
            const DateKeyValue k = DateKey(d, kind);
            const DateKeyValue next = DateKey(d.addDays(1), kind);
            EXPECT_EQ(DateFromKey(k.point, kind), d) << text << " kind " << kind;
            EXPECT_EQ(DateFromKey(k.low, kind), d) << text << " kind " << kind;
            EXPECT_EQ(DateFromKey(k.high, kind), d) << text << " kind " << kind;
            EXPECT_TRUE(k.low <= k.point && k.point <= k.high) << text;
            EXPECT_EQ(static_cast<qint64>(k.high) - k.low + 1, widths[i]) << text;
            if (d < D("2069-04-14")) {
                EXPECT_LT(k.high, next.low) << text << " kind " << kind;
            }
        }
        // Beyond the range: the last bucket.
        EXPECT_EQ(DateFromKey(DateKey(D("2080-01-01"), kind).point, kind), D("2069-04-14"));
    }
    // A day before an origin has a negative key.
    EXPECT_LT(DateKey(D("1986-07-14"), DayKey).high, 0);
}

TEST(RuleString, RoundTripsDaysAndHeader) {
    RedoRule r;
    r.kind = RedoMonthlyNth;
    r.endKind = EndOnDate;
    r.b1 = 6 + 8 * 5;
    r.b2 = 2;
    r.first = -12000; // before the epoch
    r.last = 8300;
    r.excepted = {8200, -1};
    const QByteArray s = RedoString(r);
    ASSERT_EQ(s.size(), 11);
    EXPECT_EQ(static_cast<unsigned char>(s[0]), RedoMonthlyNth + 16);
    EXPECT_EQ(Days16Bytes(-1), QByteArray("\xFF\xFF", 2));
    EXPECT_EQ(Days16Bytes(8192), QByteArray("\x00\x20", 2));
    const auto back = ParseRedoString(s);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->kind, r.kind);
    EXPECT_EQ(back->endKind, r.endKind);
    EXPECT_EQ(back->b1, r.b1);
    EXPECT_EQ(back->b2, r.b2);
    EXPECT_EQ(back->first, r.first);
    EXPECT_EQ(back->last, r.last);
    EXPECT_EQ(back->excepted, r.excepted);
    EXPECT_FALSE(ParseRedoString(s.left(10)));
    EXPECT_FALSE(ParseRedoString(s.left(5)));
    QByteArray complemented = s;
    complemented[0] = static_cast<char>(~complemented[0]);
    EXPECT_EQ(RuleKind(complemented), RedoMonthlyNth);
    EXPECT_EQ(RuleEndKind(complemented), EndOnDate);
}

TEST(AppointmentRecord, PacksAndReadsBackEveryField) {
    AppointmentRecord r;
    r.UserNumber = 3;
    r.ctlPrivate = true;
    r.ctlAppoStart = -5000;
    r.ctlAppoEnd = -4940;
    r.ctlAlarmYN = 1;
    r.ctlAlarmTime = -5015;
    // Blanks and high bytes at both ends, and bytes that look like a reference.
    r.ctlRedoString = QByteArray("\x0A\x20\xFF&#65;\x00\x20\x80\x20", 12);
    r.ctlSubject = QStringLiteral("Zahnärzt");
    r.ctlNotes = QStringLiteral("line 1\nline 2");
    const QByteArray packed = PackAppointment(r);
    const AppointmentRecord back = AppointmentFromClear(km::toSecureBytes(packed));
    EXPECT_EQ(back.UserNumber, 3);
    EXPECT_TRUE(back.ctlPrivate);
    EXPECT_EQ(back.ctlAppoStart, -5000);
    EXPECT_EQ(back.ctlAppoEnd, -4940);
    EXPECT_EQ(back.ctlAlarmYN, 1);
    EXPECT_EQ(back.ctlAlarmTime, -5015);
    EXPECT_EQ(back.ctlRedoString, r.ctlRedoString);
    EXPECT_EQ(back.ctlSubject, r.ctlSubject);
    EXPECT_EQ(back.ctlLocation, QString());
    EXPECT_EQ(back.ctlNotes, r.ctlNotes);
    // The empty location is left out of the record: field 10 follows field 8.
    const qsizetype notes = packed.lastIndexOf(QByteArray("\x0A\x0C", 2));
    ASSERT_GT(notes, 0);
    EXPECT_FALSE(packed.left(notes).contains(QByteArray("\x09\x0A", 2)));
}

// ---- Rows in a store ----

class CalendarStore : public StoreFixture {
protected:
    AppointmentRecord single(const char *day, int minute, int length = 60) {
        AppointmentRecord r;
        r.UserNumber = 1;
        r.ctlAppoStart = MomentOf(D(day), minute);
        r.ctlAppoEnd = r.ctlAppoStart + length;
        r.ctlAlarmTime = r.ctlAppoStart;
        r.ctlSubject = QStringLiteral("at %1").arg(minute);
        return r;
    }
    AppointmentRecord series(const QByteArray &rule, const char *day, int minute) {
        AppointmentRecord r = single(day, minute);
        r.ctlRedoString = rule;
        return r;
    }
    // The row's columns as the file holds them.
    std::unique_ptr<km::RowSet> row(qint64 id) {
        return store().OpenRowSet(QStringLiteral("SELECT * FROM tt WHERE fPK=%1").arg(id), km::Snapshot);
    }
    qint64 column(qint64 id, const char *name) {
        return row(id)->GetColumn(QString::fromLatin1(name)).toLongLong();
    }
    QByteArray clearColumn(qint64 id, const char *name) {
        return km::toQByteArray(
            CRY::DecryptFieldBytes(row(id)->GetColumn(QString::fromLatin1(name)).toByteArray()));
    }
    // Row ids of a day in fR1 order.
    QList<qint64> dayOrder(const char *day) {
        const DateKeyValue k = DateKey(D(day), DayKey);
        auto rs =
            store().OpenRowSet(QStringLiteral("SELECT fPK FROM tt WHERE fR3 Between %1 And %2 ORDER BY fR1")
                                   .arg(k.low)
                                   .arg(k.high),
                               km::Snapshot);
        QList<qint64> ids;
        for (; !rs->Eof(); rs->MoveNext())
            ids << rs->GetColumn(QStringLiteral("fPK")).toLongLong();
        return ids;
    }
    QStringList occurrences(const char *from, const char *to) {
        QStringList out;
        for (const Occurrence &o : CollectOccurrences(store(), D(from), D(to)))
            out << QStringLiteral("%1 %2").arg(o.id).arg(
                DateOfMoment(o.start).toString(QStringLiteral("MM-dd")) +
                QStringLiteral(" %1").arg(MinuteOfDayOfMoment(o.start)));
        return out;
    }
    WeekLocale week{"en_US"};
};

TEST_F(CalendarStore, SingleRowShape) {
    const AppointmentRecord r = single("2024-03-05", 9 * 60 + 35);
    const qint64 id = WriteAppointment(0, r);
    ASSERT_GT(id, 0);
    EXPECT_EQ(column(id, "fSec"), Section);
    EXPECT_LT(column(id, "fSub"), 148);
    EXPECT_EQ(column(id, "AE"), 1);
    EXPECT_EQ(column(id, "fG1"), 0);
    EXPECT_EQ(StartOfField(row(id)->GetColumn(QStringLiteral("fT1")).toByteArray()), r.ctlAppoStart);
    EXPECT_EQ(clearColumn(id, "fT2"), Record_Put::PackValue((9 * 60 + 35) / 6, Record_Put::tByte));
    EXPECT_EQ(DateFromKey(static_cast<qint32>(column(id, "fR3")), DayKey), D("2024-03-05"));
    EXPECT_EQ(clearColumn(id, "fT3").size(), 7);
    const auto back = ReadAppointment(id);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->ctlAppoStart, r.ctlAppoStart);
    EXPECT_EQ(back->ctlAppoEnd, r.ctlAppoEnd);
    EXPECT_EQ(back->ctlSubject, r.ctlSubject);
    EXPECT_FALSE(back->isSeries());
}

TEST_F(CalendarStore, SeriesRowShapeByKind) {
    struct Row {
        QByteArray rule;
        int subLow, subHigh;
    };
    const Row rows[] = {
        {Rule(RedoWeekly, 1 << 3, 1, "2024-03-05", "2024-06-30"), 196, 255},
        {Rule(RedoWorkday, WorkdayMask, 0, "2024-03-05", "2024-06-30"), 196, 255},
        {Rule(RedoYearly, 5, 3, "2024-03-05", "2030-03-05"), 148 + 4 * 2,
         148 + 4 * 2 + 3}, // the start's month
        {Rule(RedoYearlyNth, 3 + 8, 11, "2024-03-05", "2030-03-05"), 148 + 4 * 10,
         148 + 4 * 10 + 3}, // the rule's
    };
    for (const Row &r : rows) {
        const qint64 id = WriteAppointment(0, series(r.rule, "2024-03-05", 600));
        const qint64 sub = column(id, "fSub");
        EXPECT_GE(sub, r.subLow);
        EXPECT_LE(sub, r.subHigh);
        EXPECT_EQ(clearColumn(id, "fT3"), r.rule);
        EXPECT_EQ(DateFromKey(static_cast<qint32>(column(id, "fR4")), SeriesStartKey), D("2024-03-05"));
        EXPECT_EQ(DateFromKey(static_cast<qint32>(column(id, "fR2")), SeriesEndKey),
                  DateOfDay(EpochDay + Days16At(r.rule, 5)));
        EXPECT_EQ(ReadAppointment(id)->ctlRedoString, r.rule);
    }
    // Without end, fR2 stands on a day of the last ten years before the limit.
    const qint64 open = WriteAppointment(0, series(Rule(RedoDaily, 0, 1, "2024-03-05"), "2024-03-05", 600));
    const qint64 lastDay = DayFromKey(static_cast<qint32>(column(open, "fR2")), SeriesEndKey);
    EXPECT_GE(lastDay, LastCalendarDay - 3650);
    EXPECT_LT(lastDay, LastCalendarDay);
}

TEST_F(CalendarStore, RuleAndNoiseInFT3HaveTheSameLength) {
    const qint64 one = WriteAppointment(0, single("2024-03-05", 600));
    const qint64 many = WriteAppointment(0, series(Rule(RedoDaily, 0, 1, "2024-03-05"), "2024-03-05", 600));
    EXPECT_EQ(row(one)->GetColumn(QStringLiteral("fT3")).toByteArray().size(),
              row(many)->GetColumn(QStringLiteral("fT3")).toByteArray().size());
}

TEST_F(CalendarStore, ALastDayWithHighByteBlankStaysVisible) {
    const QByteArray rule = Rule(RedoDaily, 0, 1, "2019-08-20", "2019-08-24");
    ASSERT_EQ(rule.at(6), ' '); // the last byte of the string is a blank
    const qint64 id = WriteAppointment(0, series(rule, "2019-08-20", 480));
    EXPECT_EQ(occurrences("2019-08-18", "2019-08-31"),
              QStringList({QStringLiteral("%1 08-20 480").arg(id), QStringLiteral("%1 08-21 480").arg(id),
                           QStringLiteral("%1 08-22 480").arg(id), QStringLiteral("%1 08-23 480").arg(id),
                           QStringLiteral("%1 08-24 480").arg(id)}));
}

TEST_F(CalendarStore, MidnightToMidnightIsAnAllDayEvent) {
    AppointmentRecord r = single("2024-03-05", 0, 1440);
    r.ctlAllday = 0;
    EXPECT_EQ(ReadAppointment(WriteAppointment(0, r))->ctlAllday, 1);
}

TEST_F(CalendarStore, DayOrderKeyPlacesByStartAndRenumbers) {
    const qint64 ten = WriteAppointment(0, single("2024-03-05", 600));
    const qint64 eight = WriteAppointment(0, single("2024-03-05", 480));
    const qint64 twelve = WriteAppointment(0, single("2024-03-05", 720));
    WriteAppointment(0, single("2024-03-06", 300)); // another day stays apart
    EXPECT_EQ(dayOrder("2024-03-05"), QList<qint64>({eight, ten, twelve}));
    // The earlier rows were renumbered and marked.
    EXPECT_EQ(column(ten, "AE"), 3);
    EXPECT_EQ(column(twelve, "AE"), 1);

    // An equal start saved last goes behind; saved earlier than the last
    // start, before the first that is not earlier.
    const qint64 twelveToo = WriteAppointment(0, single("2024-03-05", 720));
    const qint64 tenToo = WriteAppointment(0, single("2024-03-05", 600));
    EXPECT_EQ(dayOrder("2024-03-05"), QList<qint64>({eight, tenToo, ten, twelve, twelveToo}));
}

TEST_F(CalendarStore, AChangedRowKeepsItsRankAndTimesOnlyKeepsItsClass) {
    const qint64 id = WriteAppointment(0, series(Rule(RedoDaily, 0, 2, "2024-03-05"), "2024-03-05", 600));
    const qint64 rank = column(id, "fR1"), sub = column(id, "fSub"), r2 = column(id, "fR2"),
                 r4 = column(id, "fR4");
    const QByteArray t3 = row(id)->GetColumn(QStringLiteral("fT3")).toByteArray();

    AppointmentRecord moved = *ReadAppointment(id);
    moved.ctlAppoStart = MomentOf(D("2024-03-07"), 660);
    moved.ctlAppoEnd = moved.ctlAppoStart + 30;
    EXPECT_EQ(WriteAppointment(id, moved, WriteScope::Times), id);
    EXPECT_EQ(column(id, "fR1"), rank);
    EXPECT_EQ(column(id, "fSub"), sub);
    EXPECT_EQ(column(id, "fR2"), r2);
    EXPECT_EQ(column(id, "fR4"), r4);
    EXPECT_EQ(row(id)->GetColumn(QStringLiteral("fT3")).toByteArray(), t3);
    EXPECT_EQ(column(id, "AE"), 3);
    EXPECT_EQ(DateFromKey(static_cast<qint32>(column(id, "fR3")), DayKey), D("2024-03-07"));
    EXPECT_EQ(StartOfField(row(id)->GetColumn(QStringLiteral("fT1")).toByteArray()), moved.ctlAppoStart);
}

TEST_F(CalendarStore, ARowOfAnotherSectionIsNotTouched) {
    ScriptedDialogs ui;
    auto rs = store().OpenRowSet(QStringLiteral("tt"));
    rs->AddNew();
    rs->SetColumn(QStringLiteral("fSec"), 14);
    rs->Update();
    const qint64 memo = rs->GetColumn(QStringLiteral("fPK")).toLongLong();
    rs.reset();
    EXPECT_EQ(WriteAppointment(memo, single("2024-03-05", 600)), 0);
    EXPECT_EQ(ui.shown, QStringList({QStringLiteral("Update impossible")}));
    EXPECT_EQ(column(memo, "fSec"), 14);
    EXPECT_EQ(store().TransactionDepth(), 0);
}

TEST_F(CalendarStore, CollectsSeriesAndSinglesOfTheDaysOnly) {
    const qint64 early = WriteAppointment(0, single("2024-03-04", 480));
    const qint64 tie = WriteAppointment(0, single("2024-03-05", 600));
    const qint64 daily =
        WriteAppointment(0, series(Rule(RedoDaily, 0, 1, "2024-03-03", "2024-03-06"), "2024-03-03", 600));
    const qint64 weekly =
        WriteAppointment(0, series(Rule(RedoWeekly, 1 << 3, 1, "2024-03-05"), "2024-03-05", 660));
    WriteAppointment(0, single("2024-03-07", 600));                                                   // after
    WriteAppointment(0, series(Rule(RedoDaily, 0, 1, "2024-02-01", "2024-03-03"), "2024-02-01", 60)); // ended
    WriteAppointment(0, series(Rule(RedoDaily, 0, 1, "2024-03-07"), "2024-03-07", 60)); // not begun
    EXPECT_EQ(
        occurrences("2024-03-04", "2024-03-06"),
        QStringList({QStringLiteral("%1 03-04 480").arg(early), QStringLiteral("%1 03-04 600").arg(daily),
                     // at an equal start, the series first
                     QStringLiteral("%1 03-05 600").arg(daily), QStringLiteral("%1 03-05 600").arg(tie),
                     QStringLiteral("%1 03-05 660").arg(weekly), QStringLiteral("%1 03-06 600").arg(daily)}));
}

TEST_F(CalendarStore, SeriesAtOneStartComeInTheOrderTheyWereWrittenWhateverTheirDrawnSub) {
    // Each series row draws its fSub; eight of them at one minute are listed
    // by row id all the same, and before a single row at that minute.
    const qint64 single = WriteAppointment(0, this->single("2024-03-05", 600));
    QStringList expected;
    for (int i = 0; i < 8; ++i) {
        const qint64 id =
            WriteAppointment(0, series(Rule(RedoDaily, 0, 1, "2024-03-01", "2024-03-09"), "2024-03-01", 600));
        expected << QStringLiteral("%1 03-05 600").arg(id);
    }
    expected << QStringLiteral("%1 03-05 600").arg(single);
    EXPECT_EQ(occurrences("2024-03-05", "2024-03-05"), expected);
}

TEST_F(CalendarStore, RowsBeforeTheOriginsStayInTheirOwnDay) {
    const qint64 old = WriteAppointment(0, single("1980-05-05", 600));
    WriteAppointment(0, single("1980-05-06", 600));
    EXPECT_EQ(occurrences("1980-05-05", "1980-05-05"),
              QStringList({QStringLiteral("%1 05-05 600").arg(old)}));
    const qint64 s = WriteAppointment(
        0, series(Rule(RedoWeekly, 1 << 2, 1, "1980-05-05", "1980-05-26"), "1980-05-05", 90));
    EXPECT_EQ(occurrences("1980-05-12", "1980-05-18"), QStringList({QStringLiteral("%1 05-12 90").arg(s)}));
}

} // namespace
