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
