// kmd on memos (14) and confidential data (16): add, list, show, edit,
// delete, with the options of list.
#include <gtest/gtest.h>

#include "cli/Kmd.h"
#include "records/frmClassified.h"
#include "ui/LanguageUS.h"

namespace {

using km::test::KmdResult;
using km::test::KmdScratch;

QString added(const KmdScratch &scratch, const QStringList &fields) {
    const KmdResult r = scratch.run(QStringList{"add", scratch.store} + fields);
    EXPECT_EQ(r.status, 0) << testing::PrintToString(r);
    EXPECT_TRUE(r.err.isEmpty());
    return r.out.trimmed();
}

TEST(KmdRecords, MemosFromAddToDelete) {
    const KmdScratch scratch;
    const QString s = scratch.store;
    const QString groceries = added(scratch, {"14", "Subject=Groceries", "Memo=eggs\nmilk\ttea\\"});
    const QString diary = added(scratch, {"14", "Subject=Diary", "Private=True"});
    ASSERT_FALSE(groceries.isEmpty());
    ASSERT_NE(groceries, diary);

    // In title order; the private memo only with --show-private.
    EXPECT_EQ(scratch.run({"list", s, "14"}).out, groceries + "\tGroceries\n");
    const KmdResult all = scratch.run({"list", s, "14", "--show-private"});
    EXPECT_EQ(all.status, 0);
    EXPECT_EQ(all.lines(), QStringList({diary + "\tDiary", groceries + "\tGroceries"}));
    EXPECT_EQ(scratch.run({"list", s, "14", "--category=0"}).lines(),
              QStringList({groceries + "\tGroceries"}));

    const KmdResult shown = scratch.run({"show", s, groceries});
    EXPECT_EQ(shown.status, 0) << testing::PrintToString(shown);
    const QStringList lines = shown.lines();
    ASSERT_EQ(lines.size(), 7) << shown.out.toStdString();
    EXPECT_EQ(lines.at(1), "1\tPrivate\tFalse");
    EXPECT_EQ(lines.at(4), "4\tSubject\tGroceries");
    EXPECT_EQ(lines.at(5), "5\tMemo\teggs\\nmilk\\ttea\\\\");
    EXPECT_EQ(lines.at(6), "category\t0\tUnfiled");
    EXPECT_EQ(scratch.run({"show", s, diary}).lines().at(1), "1\tPrivate\tTrue");

    // edit: the new title is listed, the fields not named stay.
    const KmdResult edited = scratch.run({"edit", s, diary, "Subject=Journal", "Private=False"});
    EXPECT_EQ(edited.status, 0) << testing::PrintToString(edited);
    EXPECT_EQ(scratch.run({"list", s, "14"}).lines(),
              QStringList({groceries + "\tGroceries", diary + "\tJournal"}));
    const KmdResult badEdit = scratch.run({"edit", s, diary, "Colour=red"});
    EXPECT_EQ(badEdit.status, 64);
    EXPECT_EQ(badEdit.err, "Memos have no field Colour\n");
    EXPECT_EQ(scratch.run({"edit", s, groceries, "Memo=bread"}).status, 0);
    EXPECT_EQ(scratch.run({"show", s, groceries}).lines().mid(4, 2),
              QStringList({"4\tSubject\tGroceries", "5\tMemo\tbread"}));

    EXPECT_EQ(scratch.run({"check", s}).out, "rows\t7\nfailed\t0\n");

    const KmdResult deleted = scratch.run({"delete", s, groceries});
    EXPECT_EQ(deleted.status, 0) << testing::PrintToString(deleted);
    EXPECT_EQ(scratch.run({"list", s, "14", "--show-private"}).lines(), QStringList({diary + "\tJournal"}));

    // The record is gone for every command that names it.
    const QString notFound = LanguageUS::MessageText(31) + "\n";
    for (const QStringList &args : {QStringList{"show", s, groceries}, QStringList{"delete", s, groceries},
                                    QStringList{"edit", s, groceries, "Subject=x"}}) {
        SCOPED_TRACE(args.first().toStdString());
        const KmdResult r = scratch.run(args);
        EXPECT_EQ(r.status, 1);
        EXPECT_EQ(r.err, notFound);
    }
    // Rows of the store itself are neither shown nor deleted.
    EXPECT_EQ(scratch.run({"show", s, "1"}).err, "Records of section 1 are not shown here.\n");
    const KmdResult storeRow = scratch.run({"delete", s, "1"});
    EXPECT_EQ(storeRow.status, 1);
    EXPECT_EQ(storeRow.err, "Rows of the store itself are not deleted here.\n");
    EXPECT_EQ(scratch.run({"check", s}).out, "rows\t6\nfailed\t0\n");
}

TEST(KmdRecords, ConfidentialRecordsByKind) {
    const KmdScratch scratch;
    const QString s = scratch.store;
    const QString login = added(scratch, {"16", "n0=Bank", "n1=jdoe", "notes=branch 12"});
    const QString card = added(scratch, {"16", "n0=Visa", "kind=2"});
    const QString hidden = added(scratch, {"16", "n0=Vault", "kind=2", "Private=True"});

    // Kind 1 unless --kind; private records only with --show-private.
    EXPECT_EQ(scratch.run({"list", s, "16"}).out, login + "\tBank\n");
    EXPECT_EQ(scratch.run({"list", s, "16", "--kind", "2"}).out, card + "\tVisa\n");
    EXPECT_EQ(scratch.run({"list", s, "16", "--kind=2", "--show-private"}).lines(),
              QStringList({hidden + "\tVault", card + "\tVisa"}));
    EXPECT_TRUE(scratch.run({"list", s, "16", "--kind", "3"}).out.isEmpty());

    const KmdResult shown = scratch.run({"show", s, login});
    ASSERT_EQ(shown.lines().size(), 10) << shown.out.toStdString();
    EXPECT_EQ(shown.lines().mid(0, 2), QStringList({"0\tn0\tBank", "1\tn1\tjdoe"}));
    EXPECT_EQ(shown.lines().at(5), "5\tnotes\tbranch 12");
    EXPECT_EQ(shown.lines().at(9), "kind\t1\t" + km::KindOf(1)->caption);

    // kind= moves a record to another list.
    EXPECT_EQ(scratch.run({"edit", s, login, "kind=2", "n0=Bank card"}).status, 0);
    EXPECT_TRUE(scratch.run({"list", s, "16"}).out.isEmpty());
    EXPECT_EQ(scratch.run({"list", s, "16", "--kind", "2"}).lines(),
              QStringList({login + "\tBank card", card + "\tVisa"}));
    EXPECT_EQ(scratch.run({"show", s, login}).lines().at(9), "kind\t2\t" + km::KindOf(2)->caption);

    EXPECT_EQ(scratch.run({"check", s}).out, "rows\t8\nfailed\t0\n");
}

} // namespace
