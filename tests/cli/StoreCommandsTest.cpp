// kmd on the store as a whole: create, info, check, passwd, categories,
// compact, repair, and the login every command goes through.
#include <gtest/gtest.h>

#include "cli/Kmd.h"
#include "platform/Engine.h"
#include "ui/LanguageUS.h"

namespace {

using km::test::KmdResult;
using km::test::KmdScratch;

QString message(int row) {
    return LanguageUS::MessageText(row) + QLatin1Char('\n');
}

TEST(KmdStore, CreateInfoCheckCompactRepair) {
    const KmdScratch scratch;
    const QString s = scratch.store;

    const KmdResult info = scratch.run({"info", s});
    EXPECT_EQ(info.status, 0) << testing::PrintToString(info);
    ASSERT_EQ(info.lines().size(), 5);
    EXPECT_TRUE(info.lines().at(0).startsWith("version\t2"));
    EXPECT_EQ(info.lines().mid(1), QStringList({"user\tAdmin", "1\t3", "2\t1", "5\t1"}));

    const KmdResult checked = scratch.run({"check", s});
    EXPECT_EQ(checked.status, 0) << testing::PrintToString(checked);
    EXPECT_EQ(checked.out, "rows\t5\nfailed\t0\n");

    // A new store has no categories yet.
    const KmdResult categories = scratch.run({"categories", s, "14"});
    EXPECT_EQ(categories.status, 0);
    EXPECT_TRUE(categories.out.isEmpty());

    const KmdResult memo = scratch.run({"add", s, "14", "Subject=Kept"});
    ASSERT_EQ(memo.status, 0) << testing::PrintToString(memo);

    EXPECT_EQ(scratch.runWithout({"compact", s}).status, 0);
    const KmdResult repaired = scratch.runWithout({"repair", s});
    EXPECT_EQ(repaired.status, 0) << testing::PrintToString(repaired);
    EXPECT_EQ(repaired.err, message(166));
    EXPECT_EQ(scratch.run({"list", s, "14"}).out, memo.out.trimmed() + "\tKept\n");
    EXPECT_EQ(scratch.run({"check", s}).out, "rows\t6\nfailed\t0\n");

    // create: ".kmd" is added to a bare name; an existing file needs --force,
    // which replaces it with an empty store.
    EXPECT_EQ(scratch.run({"create", "second"}).status, 0);
    EXPECT_TRUE(QFile::exists(scratch.path("second.kmd")));
    const KmdResult again = scratch.run({"create", s});
    EXPECT_EQ(again.status, 1);
    EXPECT_EQ(again.err, "The file exists already: s.kmd (use --force to replace it)\n");
    EXPECT_EQ(scratch.run({"create", s, "--force"}).status, 0);
    EXPECT_TRUE(scratch.run({"list", s, "14"}).out.isEmpty());
}

TEST(KmdStore, CheckReportsADamagedRow) {
    const KmdScratch scratch;
    const KmdResult memo = scratch.run({"add", scratch.store, "14", "Subject=Damaged"});
    ASSERT_EQ(memo.status, 0);
    const QString id = memo.out.trimmed();
    {
        auto db = km::StoreDb::OpenDatabase(scratch.path(scratch.store));
        auto row = db->OpenRowSet(QStringLiteral("SELECT * FROM tt WHERE fPK = %1").arg(id));
        ASSERT_FALSE(row->Eof());
        row->Edit();
        row->SetColumn(QStringLiteral("fEtx"), QByteArray(5, 'x'));
        row->Update();
    }
    const KmdResult checked = scratch.run({"check", scratch.store});
    EXPECT_EQ(checked.status, 1) << testing::PrintToString(checked);
    ASSERT_EQ(checked.lines().size(), 3) << checked.out.toStdString();
    EXPECT_TRUE(checked.lines().at(0).startsWith("fail\t" + id + "\t14\t"));
    EXPECT_EQ(checked.lines().mid(1), QStringList({"rows\t6", "failed\t1"}));
}

TEST(KmdStore, PasswdReplacesThePassphrase) {
    KmdScratch scratch;
    const QString s = scratch.store;
    const QString old = QString::fromLatin1(KmdScratch::Passphrase);

    // A confirmation that differs changes nothing.
    scratch.write("mismatch", old + "\nNew-Horse-77\nOther-Horse-77\n");
    EXPECT_EQ(scratch.run({"passwd", s}, "mismatch").status, 1);
    EXPECT_EQ(scratch.run({"info", s}).status, 0);

    scratch.write("change", old + "\nNew-Horse-77\nNew-Horse-77\n");
    const KmdResult changed = scratch.run({"passwd", s}, "change");
    EXPECT_EQ(changed.status, 0) << testing::PrintToString(changed);

    const KmdResult withOld = scratch.run({"info", s});
    EXPECT_EQ(withOld.status, 2);
    EXPECT_EQ(withOld.err, message(85) + message(95));
    scratch.write("new", "New-Horse-77\n");
    EXPECT_EQ(scratch.run({"info", s}, "new").status, 0);
    EXPECT_EQ(scratch.run({"check", s}, "new").out, "rows\t5\nfailed\t0\n");
}

// Every command that opens the store returns the login's status: a wrong
// passphrase is 2 for each. A missing store, a file that is no store and a
// passphrase file that cannot be read are 1, shown on the commands that reach
// the store file on their own ways.
TEST(KmdStore, LoginFailures) {
    KmdScratch scratch;
    scratch.write("wrong", "Wrong-Horse-99\n");
    // passwd takes its three lines from a file, or refuses before the login.
    scratch.write("wrong3", "Wrong-Horse-99\nNew-Horse-99\nNew-Horse-99\n");
    scratch.write("junk.kmd", "no store at all");
    const QList<QStringList> logins = {
        {"info"},
        {"check"},
        {"passwd"},
        {"categories", "14"},
        {"list", "14"},
        {"show", "6"},
        {"delete", "6"},
        {"edit", "6", "Subject=x"},
        {"add", "14", "Subject=x"},
        {"occurrences", "2024-01-01", "2024-01-31"},
    };
    for (QStringList args : logins) {
        SCOPED_TRACE(args.join(' ').toStdString());
        args.insert(1, scratch.store);
        const KmdResult wrong = scratch.run(args, args.first() == "passwd" ? "wrong3" : "wrong");
        EXPECT_EQ(wrong.status, 2);
        // The wrong passphrase, then why the program ends (no retry from a file).
        EXPECT_EQ(wrong.err, message(85) + message(95));
        EXPECT_TRUE(wrong.out.isEmpty());
    }
    const struct {
        QStringList args;
        QString passFile;
        QString err;
    } cases[] = {
        {{"info", "missing.kmd"}, "pass", "The file does not exist: missing.kmd\n"},
        {{"compact", "missing.kmd"}, "pass", "The file does not exist: missing.kmd\n"},
        {{"repair", "missing.kmd"}, "pass", "The file does not exist: missing.kmd\n"},
        {{"info", "junk.kmd"}, "pass", message(51)},
        {{"compact", "junk.kmd"}, "pass", message(51)},
        {{"info", scratch.store}, "nowhere", "Cannot read the passphrase file nowhere.\n"},
        {{"create", "other.kmd"}, "nowhere", "Cannot read the passphrase file nowhere.\n"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.args.join(' ').toStdString());
        const KmdResult r = scratch.run(c.args, c.passFile);
        EXPECT_EQ(r.status, 1);
        EXPECT_EQ(r.err, c.err);
    }
    EXPECT_FALSE(QFile::exists(scratch.path("other.kmd")));
    // The passphrase file may also come before the command.
    const KmdResult before = scratch.runWithout({"--passphrase-file", "pass", "info", scratch.store});
    EXPECT_EQ(before.status, 0) << testing::PrintToString(before);
}

} // namespace
