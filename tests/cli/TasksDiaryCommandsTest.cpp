// kmd on tasks (15) and the diary (13): add, list in the list's order, edit
// through the general edit, and a day's text written and read back.
#include <gtest/gtest.h>

#include "cli/Kmd.h"

namespace {

using km::test::KmdResult;
using km::test::KmdScratch;

QString added(const KmdScratch &scratch, const QStringList &fields) {
    const KmdResult r = scratch.run(QStringList{"add", scratch.store, "15"} + fields);
    EXPECT_EQ(r.status, 0) << testing::PrintToString(r);
    return r.out.trimmed();
}

TEST(KmdTasks, AddListInTheListsOrderAndEdit) {
    const KmdScratch scratch;
    const QString s = scratch.store;
    const QString later = added(scratch, {"Description=Later", "due=2060-01-01", "priority=low"});
    const QString none = added(scratch, {"Description=Someday"});
    const QString late = added(scratch, {"Description=Late", "due=2001-02-03", "priority=high"});
    const QString done = added(scratch, {"Description=Done", "due=2002-01-01", "completed=2003-04-05"});
    const QString hidden = added(scratch, {"Description=Hidden", "Private=True", "Memo=a note"});

    EXPECT_EQ(scratch.run({"list", s, "15"}).lines(),
              QStringList({late + "\tLate\t2001-02-03\thigh\t", later + "\tLater\t2060-01-01\tlow\t",
                           none + "\tSomeday\t\tnormal\t"}));
    EXPECT_EQ(scratch.run({"list", s, "15", "--completed", "--show-private"}).lines(),
              QStringList({late + "\tLate\t2001-02-03\thigh\t", later + "\tLater\t2060-01-01\tlow\t",
                           none + "\tSomeday\t\tnormal\t", hidden + "\tHidden\t\tnormal\t",
                           done + "\tDone\t2002-01-01\tnormal\t2003-04-05"}));

    // The general edit hands a task row to the task's own edit.
    EXPECT_EQ(scratch.run({"edit", s, later, "due=", "priority=high", "completed=2004-01-01"}).status, 0);
    EXPECT_EQ(scratch.run({"list", s, "15", "--completed"}).lines().last(),
              later + "\tLater\t\thigh\t2004-01-01");
    EXPECT_EQ(scratch.run({"edit", s, later, "priority=urgent"}).status, 64);
    EXPECT_EQ(scratch.run({"edit", s, later, "Colour=red"}).status, 64);
    EXPECT_EQ(scratch.run({"add", s, "15", "due=tomorrow"}).status, 64);
    EXPECT_EQ(scratch.run({"list", s, "15", "--category=77"}).status, 1);
    EXPECT_EQ(scratch.run({"check", s}).status, 0);
}

TEST(KmdDiary, ADayWrittenIsReadBackAndPassesTheCheck) {
    const KmdScratch scratch;
    const QString s = scratch.store;
    EXPECT_EQ(scratch.run({"diary", s, "2024-02-29", "--set", "Leap day.\nSnow."}).status, 0);
    EXPECT_EQ(scratch.run({"diary", s, "2024-02-29", "--set", "Leap day, snow."}).status, 0);
    EXPECT_EQ(scratch.run({"diary", s, "2024-02-29"}).out, "Leap day, snow.\n");
    EXPECT_EQ(scratch.run({"diary", s, "2024-03-01"}).out, "");
    EXPECT_EQ(scratch.run({"info", s}).lines().filter("13\t"), QStringList({"13\t1"}));
    EXPECT_EQ(scratch.run({"check", s}).status, 0);
    EXPECT_EQ(scratch.run({"diary", s, "29.2.2024"}).status, 64);
}

} // namespace
