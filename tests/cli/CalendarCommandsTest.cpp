// kmd on the calendar: appointments and series added, their occurrences
// listed day by day.
#include <gtest/gtest.h>

#include "cli/Kmd.h"

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
