// kmd against what a real machine hands it: stores left by killed processes,
// damaged and read-only stores, hostile passphrase files, values that must
// stay off the command line, and record values that try to forge output.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <sqlite3.h>

#include "cli/Kmd.h"
#include "ui/LanguageUS.h"

namespace {

using km::test::KmdResult;
using km::test::KmdScratch;

QByteArray bytesOf(const QString &path) {
    QFile f(path);
    EXPECT_TRUE(f.open(QIODevice::ReadOnly)) << path.toStdString();
    return f.readAll();
}

// kmd with standard input given, optionally as the user nobody (when the
// tests run as root, permissions would not stop a write).
KmdResult runKmd(const KmdScratch &scratch, const QStringList &args, const QByteArray &input = {},
                 bool asNobody = false) {
    QProcess p;
    p.setWorkingDirectory(scratch.dir.path());
    if (asNobody && geteuid() == 0)
        p.setChildProcessModifier([] {
            if (setgid(65534) != 0 || setuid(65534) != 0) _exit(99);
        });
    p.start(QStringLiteral(KM_KMD_PATH), args);
    p.write(input);
    p.closeWriteChannel();
    KmdResult r;
    if (!p.waitForFinished(60000)) {
        p.kill();
        p.waitForFinished();
        ADD_FAILURE() << "kmd did not finish: " << args.join(' ').toStdString();
    }
    r.out = QString::fromUtf8(p.readAllStandardOutput());
    r.err = QString::fromUtf8(p.readAllStandardError());
    if (p.exitStatus() == QProcess::NormalExit) r.status = p.exitCode();
    return r;
}

void rawExec(const QString &path, const char *sql, sqlite3 **keep = nullptr) {
    sqlite3 *db = nullptr;
    ASSERT_EQ(sqlite3_open(QFile::encodeName(path).constData(), &db), SQLITE_OK);
    char *message = nullptr;
    const int rc = sqlite3_exec(db, sql, nullptr, nullptr, &message);
    EXPECT_EQ(rc, SQLITE_OK) << (message ? message : "");
    sqlite3_free(message);
    if (keep)
        *keep = db;
    else
        sqlite3_close(db);
}

// The files of a store as a killed writer leaves them: copied while the
// writer is in the middle of its work.
void copyCrashState(const KmdScratch &scratch, const QString &to) {
    const QString from = scratch.path(scratch.store);
    for (const char *side : {"", "-journal", "-wal"})
        if (QFileInfo::exists(from + side)) {
            ASSERT_TRUE(QFile::copy(from + side, scratch.path(to) + side));
        }
}

} // namespace

TEST(KmdCrash, EveryCommandOpensAStoreAKilledWriterLeft) {
    KmdScratch scratch;
    const QString s = scratch.store;
    ASSERT_EQ(scratch.run({"add", s, "14", "Subject=Before the crash"}).status, 0);
    const QString listed = scratch.run({"list", s, "14"}).out;

    // Killed mid-transaction on a rollback journal: half its pages are written.
    sqlite3 *writer = nullptr;
    rawExec(scratch.path(s),
            "PRAGMA cache_size = 2; BEGIN; DELETE FROM tt WHERE fSec = 14; "
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 300) "
            "INSERT INTO tt (fEtx, fSec, fSub) SELECT randomblob(400), 30, 1 FROM n",
            &writer);
    ASSERT_GT(QFileInfo(scratch.path(s) + "-journal").size(), 0);
    copyCrashState(scratch, "journal.kmd");
    sqlite3_exec(writer, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_close(writer);

    // Killed in a session: a committed row is in the log only.
    rawExec(scratch.path(s), "PRAGMA locking_mode = EXCLUSIVE; PRAGMA journal_mode = WAL; "
                             "UPDATE tt SET AE = AE WHERE fSec = 14",
            &writer);
    ASSERT_TRUE(QFileInfo::exists(scratch.path(s) + "-wal"));
    copyCrashState(scratch, "log.kmd");
    sqlite3_close(writer);

    for (const QString store : {"journal.kmd", "log.kmd"}) {
        SCOPED_TRACE(store.toStdString());
        const KmdResult info = scratch.run({"info", store});
        EXPECT_EQ(info.status, 0) << testing::PrintToString(info);
        EXPECT_EQ(scratch.run({"check", store}).status, 0);
        EXPECT_EQ(scratch.run({"list", store, "14"}).out, listed);
        EXPECT_EQ(scratch.run({"add", store, "14", "Subject=After"}).status, 0);
        for (const char *side : {"-journal", "-wal", "-shm"})
            EXPECT_FALSE(QFileInfo::exists(scratch.path(store) + side)) << side;
    }
}

TEST(KmdCrash, ADamagedStoreNamesRepairAndRepairTellsWhatItKept) {
    KmdScratch scratch;
    const QString s = scratch.store;
    // The key rows are lost, and the file is cut.
    rawExec(scratch.path(s), "DELETE FROM tt WHERE fSec IN (1, 2)");
    QByteArray bytes = bytesOf(scratch.path(s));
    bytes.truncate(bytes.size() * 2 / 3);
    {
        QFile f(scratch.path(s));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(bytes);
    }
    const KmdResult info = scratch.run({"info", s});
    EXPECT_EQ(info.status, 1);
    EXPECT_TRUE(info.err.contains("kmd repair s.kmd")) << info.err.toStdString();

    // The result of the repair is no store, and repair says so.
    const KmdResult repaired = scratch.runWithout({"repair", s});
    EXPECT_EQ(repaired.status, 1);
    EXPECT_FALSE(repaired.err.contains(LanguageUS::MessageText(166))) << repaired.err.toStdString();
    EXPECT_TRUE(repaired.err.contains(LanguageUS::MessageText(46))) << repaired.err.toStdString();
    EXPECT_TRUE(QFileInfo::exists(scratch.path("s.kmd.damaged")));
}

TEST(KmdReadOnly, CommandsThatOnlyReadLeaveTheFileAsItWasAndWorkOnAReadOnlyStore) {
    KmdScratch scratch;
    const QString s = scratch.store;
    const KmdResult memo = scratch.run({"add", s, "14", "Subject=Read me"});
    ASSERT_EQ(memo.status, 0);
    const QString id = memo.out.trimmed();
    const QString file = scratch.path(s);
    const QByteArray bytes = bytesOf(file);
    const QDateTime mtime = QFileInfo(file).lastModified();
    for (const QStringList &args : QList<QStringList>{{"info", s},
                                                       {"list", s, "14"},
                                                       {"show", s, id},
                                                       {"check", s},
                                                       {"categories", s, "14"},
                                                       {"occurrences", s, "2024-01-01", "2024-01-31"}}) {
        const KmdResult r = scratch.run(args);
        EXPECT_EQ(r.status, 0) << testing::PrintToString(r);
        EXPECT_EQ(bytesOf(file), bytes) << args.join(' ').toStdString();
        EXPECT_EQ(QFileInfo(file).lastModified(), mtime) << args.join(' ').toStdString();
    }

    // Mode 0444 in a folder its reader may not write.
    ASSERT_EQ(chmod(QFile::encodeName(file).constData(), 0444), 0);
    ASSERT_EQ(chmod(QFile::encodeName(scratch.path("pass")).constData(), 0444), 0);
    ASSERT_EQ(chmod(QFile::encodeName(scratch.dir.path()).constData(), 0555), 0);
    const QStringList pass = {"--passphrase-file", "pass"};
    const KmdResult info = runKmd(scratch, QStringList{"info", s} + pass, {}, true);
    EXPECT_EQ(info.status, 0) << testing::PrintToString(info);
    const KmdResult list = runKmd(scratch, QStringList{"list", s, "14"} + pass, {}, true);
    EXPECT_EQ(list.out, id + "\tRead me\n") << testing::PrintToString(list);
    const KmdResult add = runKmd(scratch, QStringList{"add", s, "14", "Subject=No"} + pass, {}, true);
    EXPECT_EQ(add.status, 1);
    EXPECT_TRUE(add.err.contains("The database is open read-only.")) << add.err.toStdString();
    EXPECT_EQ(bytesOf(file), bytes);
    chmod(QFile::encodeName(scratch.dir.path()).constData(), 0700);
}

TEST(KmdHostileInput, PassphraseFilesAreBoundedAndMustBeUtf8) {
    KmdScratch scratch;
    const KmdResult zero = scratch.run({"info", scratch.store}, "/dev/zero");
    EXPECT_EQ(zero.status, 1);
    EXPECT_EQ(zero.err, "The passphrase file /dev/zero is longer than 64 KiB.\n");

    QFile bad(scratch.path("latin1"));
    ASSERT_TRUE(bad.open(QIODevice::WriteOnly));
    bad.write("Korrekt-Pferd-\xe9\n");
    bad.close();
    const KmdResult latin1 = scratch.run({"info", scratch.store}, "latin1");
    EXPECT_EQ(latin1.status, 1);
    EXPECT_EQ(latin1.err, "The passphrase file latin1 is not UTF-8 text.\n");

    // One line of standard input is bounded too.
    const KmdResult endless = runKmd(scratch, {"info", scratch.store}, QByteArray(70000, 'x'));
    EXPECT_NE(endless.status, 0);
    EXPECT_TRUE(endless.err.contains("longer than 64 KiB")) << endless.err.toStdString();
}

TEST(KmdHostileInput, APassphraseOutsideCodePage1252KeepsEveryCharacter) {
    KmdScratch scratch(false);
    scratch.write("cyr", QStringLiteral("Пароль-Секрет-2024\n"));
    ASSERT_EQ(scratch.run({"create", "c.kmd"}, "cyr").status, 0);
    EXPECT_EQ(scratch.run({"info", "c.kmd"}, "cyr").status, 0);
    scratch.write("qm", QStringLiteral("?\?\?\?\?\?-?\?\?\?\?\?-2024\n"));
    scratch.write("other", QStringLiteral("Виолет-Тайное-2024\n"));
    EXPECT_EQ(scratch.run({"info", "c.kmd"}, "qm").status, 2);
    EXPECT_EQ(scratch.run({"info", "c.kmd"}, "other").status, 2);

    // A store made before keeps opening with its passphrase in code page 1252.
    ASSERT_TRUE(QFile::copy(QStringLiteral(KM_TEST_DATA_DIR "/legacy1252.kmd"), scratch.path("old.kmd")));
    QFile::setPermissions(scratch.path("old.kmd"), QFile::ReadOwner | QFile::WriteOwner);
    scratch.write("old", QStringLiteral("Grüße-Schlüssel-€42\n"));
    const KmdResult old = scratch.run({"list", "old.kmd", "14"}, "old");
    EXPECT_EQ(old.status, 0) << testing::PrintToString(old);
    EXPECT_EQ(old.out, "6\tWritten before\n");
}

TEST(KmdHostileInput, MisleadingCasesGetClearMessages) {
    KmdScratch scratch;
    const QString fifo = scratch.path("fifo");
    ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    for (const QString &path : {QStringLiteral("fifo"), QStringLiteral("/dev/null")}) {
        const KmdResult r = scratch.run({"info", path});
        EXPECT_EQ(r.status, 1);
        EXPECT_EQ(r.err, "Not a store file: " + path + " is a device, a pipe or a socket.\n");
    }
    const KmdResult unknown = scratch.run({"info", scratch.store, "--passphrase", "x"});
    EXPECT_EQ(unknown.status, 64);
    EXPECT_TRUE(unknown.err.contains("Unknown option 'passphrase'")) << unknown.err.toStdString();

    // passwd from a two-line file: line 2 is not its own confirmation.
    scratch.write("two", QStringLiteral("%1\nNew-Passphrase-7\n").arg(KmdScratch::Passphrase));
    const KmdResult passwd = scratch.run({"passwd", scratch.store}, "two");
    EXPECT_EQ(passwd.status, 64);
    EXPECT_TRUE(passwd.err.contains("three lines")) << passwd.err.toStdString();
    EXPECT_EQ(scratch.run({"info", scratch.store}).status, 0) << "the passphrase is as it was";
    scratch.write("three", QStringLiteral("%1\nNew-Passphrase-7\nNew-Passphrase-7\n").arg(KmdScratch::Passphrase));
    EXPECT_EQ(scratch.run({"passwd", scratch.store}, "three").status, 0);
}

TEST(KmdHostileInput, PrintedValuesCannotForgeLinesOrColumns) {
    KmdScratch scratch;
    const KmdResult memo =
        scratch.run({"add", scratch.store, "14", QStringLiteral("Subject=Real\n999\tForged\x01\\")});
    ASSERT_EQ(memo.status, 0);
    const QString id = memo.out.trimmed();
    EXPECT_EQ(scratch.run({"list", scratch.store, "14"}).out, id + "\tReal\\n999\\tForged\\x01\\\\\n");
    EXPECT_TRUE(scratch.run({"show", scratch.store, id}).out.contains("4\tSubject\tReal\\n999\\tForged\\x01\\\\\n"));
}

TEST(KmdHostileInput, SecretValuesComeFromStandardInputOrAValuesFile) {
    KmdScratch scratch;
    const QStringList pass = {"--passphrase-file", "pass"};
    const KmdResult fromInput =
        runKmd(scratch, QStringList{"add", scratch.store, "16", "n0=Card", "n3=-"} + pass, "4711\n");
    ASSERT_EQ(fromInput.status, 0) << testing::PrintToString(fromInput);
    EXPECT_TRUE(scratch.run({"show", scratch.store, fromInput.out.trimmed()}).out.contains("3\tn3\t4711\n"));

    scratch.write("values", QStringLiteral("n0=Bank\nn3=0815=x\n"));
    const KmdResult fromFile = scratch.run({"add", scratch.store, "16", "--values-file", "values"});
    ASSERT_EQ(fromFile.status, 0) << testing::PrintToString(fromFile);
    const QString shown = scratch.run({"show", scratch.store, fromFile.out.trimmed()}).out;
    EXPECT_TRUE(shown.contains("0\tn0\tBank\n")) << shown.toStdString();
    EXPECT_TRUE(shown.contains("3\tn3\t0815=x\n")) << shown.toStdString();

    scratch.write("bad", QStringLiteral("no equals sign\n"));
    EXPECT_EQ(scratch.run({"add", scratch.store, "16", "--values-file", "bad"}).status, 64);
    EXPECT_TRUE(scratch.run({"add", "--help"}, QString()).out.contains("values-file"));
}
