// kmd on the calendar: appointments and series added, their occurrences
// listed day by day, and changed through the appointment editor.
#include <gtest/gtest.h>

#include "cli/Kmd.h"
#include "platform/Engine.h"

namespace {

using km::test::KmdResult;
using km::test::KmdScratch;

TEST(KmdCalendar, AddedSeriesAndAppointmentsOccur) {
    const KmdScratch scratch;
    const QString s = scratch.store;
    const KmdResult series = scratch.run({"add", s, "12", "start=2024-05-06 09:00", "end=2024-05-06 09:15",
                                          "subject=Standup", "rule=weekly:Mo+Th,count=4"});
    ASSERT_EQ(series.status, 0) << testing::PrintToString(series);
    const QString standup = series.out.trimmed();
    const KmdResult single = scratch.run({"add", s, "12", "start=2024-05-09 08:00", "end=2024-05-09 08:30",
                                          "subject=Dentist", "private=True"});
    ASSERT_EQ(single.status, 0) << testing::PrintToString(single);
    const QString dentist = single.out.trimmed();

    const KmdResult may = scratch.run({"occurrences", s, "2024-05-01", "2024-05-31"});
    EXPECT_EQ(may.status, 0) << testing::PrintToString(may);
    EXPECT_EQ(
        may.lines(),
        QStringList({standup + "\t2024-05-06 09:00\tStandup", standup + "\t2024-05-09 09:00\tStandup",
                     standup + "\t2024-05-13 09:00\tStandup", standup + "\t2024-05-16 09:00\tStandup"}));

    // The private appointment comes in its place in the day with --show-private.
    const KmdResult day = scratch.run({"occurrences", s, "2024-05-09", "2024-05-09", "--show-private"});
    EXPECT_EQ(day.lines(), QStringList({dentist + "\t2024-05-09 08:00\tDentist",
                                        standup + "\t2024-05-09 09:00\tStandup"}));
    EXPECT_TRUE(scratch.run({"occurrences", s, "2024-05-17", "2024-06-30"}).out.isEmpty());

    const KmdResult checked = scratch.run({"check", s});
    EXPECT_EQ(checked.status, 0) << testing::PrintToString(checked);
    EXPECT_EQ(checked.lines().last(), "failed\t0");

    // A rule that cannot be read writes nothing.
    const KmdResult bad = scratch.run({"add", s, "12", "start=2024-05-06 09:00", "end=2024-05-06 09:15",
                                       "subject=Bad", "rule=fortnightly"});
    EXPECT_EQ(bad.status, 64);
    EXPECT_TRUE(bad.err.contains("\nusage: kmd add STORE 12 ")) << bad.err.toStdString();
    EXPECT_EQ(scratch.run({"check", s}).out, checked.out);
}

// The window's layout through kmd: overlaps side by side, the all-day strip
// first, marks and private rows; then drags of a single row and of a series.
TEST(KmdCalendar, LayoutAndMoveGoThroughTheCalendarWindow) {
    const KmdScratch scratch;
    const QString s = scratch.store;
    const auto add = [&](const QStringList &fields) {
        QStringList args = {"add", s, "12"};
        const KmdResult r = scratch.run(args + fields);
        EXPECT_EQ(r.status, 0) << testing::PrintToString(r);
        return r.out.trimmed();
    };
    const QString a = add({"start=2024-05-06 09:00", "end=2024-05-06 10:00", "subject=A", "alarm=15"});
    const QString b = add({"start=2024-05-06 09:15", "end=2024-05-06 09:45", "subject=B", "notes=n"});
    const QString c = add({"start=2024-05-06 09:30", "end=2024-05-06 10:30", "subject=C", "private=True"});
    const QString day = add({"start=2024-05-06 00:00", "end=2024-05-07 00:00", "subject=Fair", "allday=1"});
    const QString weekly = add({"start=2024-05-06 14:00", "end=2024-05-06 15:00", "subject=Gym",
                                "rule=weekly:Mo+We"});

    const KmdResult all = scratch.run({"layout", s, "2024-05-06", "--view", "day", "--show-private"});
    ASSERT_EQ(all.status, 0) << testing::PrintToString(all);
    EXPECT_EQ(all.lines(), QStringList({day + "\t2024-05-06 00:00\t2024-05-07 00:00\t1\t1\t1\t\tFair",
                                        a + "\t2024-05-06 09:00\t2024-05-06 10:00\t0\t1\t3\tA\tA",
                                        b + "\t2024-05-06 09:15\t2024-05-06 09:45\t0\t2\t3\tG\tB",
                                        c + "\t2024-05-06 09:30\t2024-05-06 10:30\t0\t3\t3\tB\tC",
                                        weekly + "\t2024-05-06 14:00\t2024-05-06 15:00\t0\t1\t1\tC\tGym"}));
    // Without private rows C is no box, and B no longer shares with it.
    const KmdResult open = scratch.run({"layout", s, "2024-05-06", "--view", "day"});
    EXPECT_EQ(open.lines().mid(1, 2),
              QStringList({a + "\t2024-05-06 09:00\t2024-05-06 10:00\t0\t1\t2\tA\tA",
                           b + "\t2024-05-06 09:15\t2024-05-06 09:45\t0\t2\t2\tG\tB"}));

    // A drag of the series' Wednesday occurrence to Thursday 16:00: the series
    // stays on its days at the new time.
    const KmdResult moved = scratch.run({"move", s, weekly, "2024-05-08 14:00", "2024-05-09 16:00"});
    ASSERT_EQ(moved.status, 0) << testing::PrintToString(moved);
    EXPECT_EQ(scratch.run({"occurrences", s, "2024-05-06", "2024-05-12"}).lines().filter("Gym"),
              QStringList({weekly + "\t2024-05-06 16:00\tGym", weekly + "\t2024-05-08 16:00\tGym"}));
    // Only the end: B becomes longer; its start stays.
    ASSERT_EQ(scratch.run({"move", s, b, "2024-05-06 09:15", "2024-05-06 09:15", "--end", "2024-05-06 11:00"})
                  .status,
              0);
    const KmdResult week = scratch.run({"layout", s, "2024-05-06", "--view", "workweek"});
    EXPECT_TRUE(week.lines().contains(b + "\t2024-05-06 09:15\t2024-05-06 11:00\t0\t2\t2\tG\tB"))
        << testing::PrintToString(week);
    // A single row moves to another day and keeps its length.
    ASSERT_EQ(scratch.run({"move", s, a, "2024-05-06 09:00", "2024-05-07 13:00"}).status, 0);
    EXPECT_TRUE(scratch.run({"layout", s, "2024-05-07", "--view", "day"})
                    .lines()
                    .contains(a + "\t2024-05-07 13:00\t2024-05-07 14:00\t0\t1\t1\tA\tA"));
    EXPECT_EQ(scratch.run({"check", s}).lines().last(), "failed\t0");

    // No occurrence there, or no view: nothing written, and a reason.
    const KmdResult none = scratch.run({"move", s, a, "2024-05-06 09:00", "2024-05-08 09:00"});
    EXPECT_EQ(none.status, 1);
    EXPECT_FALSE(none.err.isEmpty());
    EXPECT_EQ(scratch.run({"layout", s, "2024-05-07", "--view", "month"}).status, 64);
}

} // namespace

namespace {

using km::test::KmdResult;
using km::test::KmdScratch;

// The raw columns of a row, read from the file without any key.
QString rowBytes(const QString &path, const QString &id) {
    auto store = km::StoreDb::OpenDatabase(path, false, true);
    auto rows = store->OpenRowSet(QStringLiteral("SELECT * FROM tt WHERE fPK=%1").arg(id), km::Snapshot);
    QStringList out;
    for (const char *c : {"fSec", "fSub", "fEtx", "fT1", "fT2", "fT3", "fR1", "fR2", "fR3", "fR4", "AE"})
        out << QString::fromLatin1(rows->GetColumn(QString::fromLatin1(c)).toByteArray().toHex());
    return out.join('|');
}

TEST(KmdCalendar, EditGoesThroughTheEditorAndWritesNothingUnchanged) {
    const KmdScratch scratch;
    const QString s = scratch.store;
    const QString standup = scratch
                                .run({"add", s, "12", "start=2024-05-06 09:00", "end=2024-05-06 09:15",
                                      "subject=Standup", "rule=weekly:Mo+Th,count=4"})
                                .out.trimmed();
    const QString dentist =
        scratch.run({"add", s, "12", "start=2024-05-09 08:00", "end=2024-05-09 08:30", "subject=Dentist"})
            .out.trimmed();
    const QString path = scratch.path(s);

    // The same values again: neither row changes a byte.
    const QString seriesBefore = rowBytes(path, standup);
    const QString singleBefore = rowBytes(path, dentist);
    EXPECT_EQ(scratch.run({"edit", s, standup, "subject=Standup"}).status, 0);
    EXPECT_EQ(scratch.run({"edit", s, dentist, "subject=Dentist", "start=2024-05-09 08:00"}).status, 0);
    EXPECT_EQ(rowBytes(path, standup), seriesBefore);
    EXPECT_EQ(rowBytes(path, dentist), singleBefore);

    // A new start keeps the length; a new rule takes the new day as its first.
    const KmdResult moved = scratch.run({"edit", s, dentist, "start=2024-05-10 14:00"});
    EXPECT_EQ(moved.status, 0) << testing::PrintToString(moved);
    const KmdResult rerule = scratch.run({"edit", s, standup, "start=2024-05-07 10:00", "rule=weekly:Tu,count=3"});
    EXPECT_EQ(rerule.status, 0) << testing::PrintToString(rerule);
    EXPECT_EQ(scratch.run({"occurrences", s, "2024-05-01", "2024-05-31"}).lines(),
              QStringList({standup + "\t2024-05-07 10:00\tStandup", dentist + "\t2024-05-10 14:00\tDentist",
                           standup + "\t2024-05-14 10:00\tStandup", standup + "\t2024-05-21 10:00\tStandup"}));
    // rule=none makes the series a single appointment on its day.
    EXPECT_EQ(scratch.run({"edit", s, standup, "rule=none"}).status, 0);
    EXPECT_EQ(scratch.run({"occurrences", s, "2024-05-01", "2024-05-31"}).lines(),
              QStringList({standup + "\t2024-05-07 10:00\tStandup", dentist + "\t2024-05-10 14:00\tDentist"}));
    EXPECT_EQ(scratch.run({"check", s}).lines().last(), "failed\t0");

    // A bad field, a row that is not there, a row without an edit: the store stays.
    const QString after = rowBytes(path, dentist);
    const KmdResult bad = scratch.run({"edit", s, dentist, "colour=red"});
    EXPECT_EQ(bad.status, 64);
    EXPECT_TRUE(bad.err.startsWith("Unknown field of an appointment: colour\nusage: kmd edit STORE ID "))
        << bad.err.toStdString();
    const KmdResult late = scratch.run({"edit", s, dentist, "end=2024-05-11 10:00"});
    EXPECT_EQ(late.status, 64);
    EXPECT_EQ(rowBytes(path, dentist), after);
    EXPECT_EQ(scratch.run({"edit", s, "999", "subject=x"}).err, "No record found\n");
    EXPECT_EQ(scratch.run({"edit", s, "1", "subject=x"}).err, "Records of section 1 are not edited here.\n");
}

} // namespace
