// A store left behind by a killed process, and damaged stores: every open
// folds a crash's leftovers in, compact and repair keep the committed rows
// and leave no old side file, repair ends on any file, and the temporary
// files of killed operations go at the next open.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <functional>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <sqlite3.h>

#include "platform/Engine.h"
#include "platform/EngineMaintenance.h"

using namespace km;

namespace {

QByteArray fileBytes(const QString &path) {
    QFile f(path);
    EXPECT_TRUE(f.open(QIODevice::ReadOnly)) << path.toStdString();
    return f.readAll();
}

void writeBytes(const QString &path, const QByteArray &bytes) {
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(bytes);
}

void exec(sqlite3 *db, const char *sql) {
    char *message = nullptr;
    const int rc = sqlite3_exec(db, sql, nullptr, nullptr, &message);
    EXPECT_EQ(rc, SQLITE_OK) << sql << ": " << (message ? message : "");
    sqlite3_free(message);
}

qint64 rowsIn(const QString &path) {
    auto store = StoreDb::OpenDatabase(path, false, true);
    auto rows = store->OpenRowSet(QStringLiteral("SELECT Count(fPK) AS N FROM tt"), Snapshot);
    return rows->GetColumn("N").toLongLong();
}

// Runs f in a child process that dies without cleaning up, as a killed one does.
void inKilledChild(const std::function<void()> &f) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        f();
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
}

// Runs f in a child and waits at most seconds; false if it did not end (it
// is killed then).
bool endsWithin(int seconds, const std::function<int()> &f, int *exitCode) {
    const pid_t child = fork();
    if (child < 0) return false;
    if (child == 0) _exit(f());
    for (int waited = 0; waited < seconds * 10; ++waited) {
        int status = 0;
        if (waitpid(child, &status, WNOHANG) == child) {
            *exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            return true;
        }
        usleep(100 * 1000);
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    return false;
}

class StoreRecoveryTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        path = dir.filePath(QStringLiteral("crash.kmd"));
        StoreDb::CreateDatabase(path);
        sqlite3 *db = nullptr;
        ASSERT_EQ(sqlite3_open(QFile::encodeName(path).constData(), &db), SQLITE_OK);
        exec(db, "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 40) "
                 "INSERT INTO tt (fEtx, fSec, fSub) SELECT randomblob(100), 20, 1 FROM n");
        sqlite3_close(db);
        before = rowsIn(path);
        ASSERT_EQ(before, 40);
    }

    // A session that committed rows and was killed: they are in the log only.
    void crashWithCommittedRowsInTheLog(int rows) {
        inKilledChild([&] {
            auto store = StoreDb::OpenDatabase(path);
            for (int i = 0; i < rows; ++i)
                store->Execute(QStringLiteral("INSERT INTO tt (fSec, fSub) VALUES (21, 1)"));
            _exit(0);
        });
        ASSERT_TRUE(QFileInfo::exists(path + "-wal"));
        ASSERT_GT(QFileInfo(path + "-wal").size(), 0);
    }

    void expectNoSideFiles(const QString &store) {
        for (const QString &side : StoreSideFiles(store))
            EXPECT_FALSE(QFileInfo::exists(side)) << side.toStdString();
    }

    QTemporaryDir dir;
    QString path;
    qint64 before = 0;
};

} // namespace

TEST_F(StoreRecoveryTest, AHotJournalIsRolledBackByEveryOpenReadOnlyOnesToo) {
    // A writer killed half way through a transaction too big for its cache:
    // changed pages are in the file, the old ones in the journal.
    inKilledChild([&] {
        sqlite3 *db = nullptr;
        sqlite3_open(QFile::encodeName(path).constData(), &db);
        sqlite3_exec(db, "PRAGMA cache_size = 2; BEGIN; DELETE FROM tt WHERE fPK > 5; "
                         "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 400) "
                         "INSERT INTO tt (fEtx, fSec, fSub) SELECT randomblob(400), 22, 1 FROM n",
                     nullptr, nullptr, nullptr);
        _exit(0);
    });
    ASSERT_GT(QFileInfo(path + "-journal").size(), 0) << "the crash left a hot journal";
    EXPECT_TRUE(StoreNeedsRecovery(path));

    EXPECT_EQ(rowsIn(path), before) << "the read-only open rolled the journal back";
    expectNoSideFiles(path);
    EXPECT_TRUE(StoreIsSound(path));
    EXPECT_FALSE(StoreNeedsRecovery(path));
}

TEST_F(StoreRecoveryTest, ALogLeftByAKilledSessionIsFoldedInAtTheNextOpen) {
    crashWithCommittedRowsInTheLog(7);
    EXPECT_EQ(rowsIn(path), before + 7);
    expectNoSideFiles(path);
    // Folded in once, the file opens alone: no log is needed any more.
    const QByteArray folded = fileBytes(path);
    EXPECT_EQ(rowsIn(path), before + 7);
    EXPECT_EQ(fileBytes(path), folded);
}

TEST_F(StoreRecoveryTest, CompactAndRepairAfterACrashKeepTheCommittedRowsAndLeaveNoOldLog) {
    crashWithCommittedRowsInTheLog(9);
    const QString copy = dir.filePath(QStringLiteral("copy.kmd"));
    ASSERT_TRUE(QFile::copy(path, copy));
    ASSERT_TRUE(QFile::copy(path + "-wal", copy + "-wal"));

    CompactInPlace(path);
    expectNoSideFiles(path);
    EXPECT_TRUE(StoreIsSound(path));
    EXPECT_EQ(rowsIn(path), before + 9);

    const RepairReport report = RepairDatabase(copy);
    expectNoSideFiles(copy);
    EXPECT_TRUE(report.wasSound) << "the log belonged to a sound store";
    EXPECT_EQ(rowsIn(copy), before + 9);
}

TEST_F(StoreRecoveryTest, AStaleLogBesideADamagedStoreGoesAsideWithIt) {
    crashWithCommittedRowsInTheLog(3);
    const QByteArray log = fileBytes(path + "-wal");
    // The store is cut inside its last page: damaged, its log will not fold in.
    QByteArray bytes = fileBytes(path);
    bytes.chop(100);
    writeBytes(path, bytes);

    RepairDatabase(path);
    expectNoSideFiles(path);
    EXPECT_TRUE(StoreIsSound(path));
    EXPECT_NO_THROW(rowsIn(path)) << "no old log is applied to the new file";
}

TEST_F(StoreRecoveryTest, TemporaryFilesOfKilledOperationsGoAtTheNextWritingOpen) {
    const QString temp = StoreTemporaryPath(path);
    EXPECT_TRUE(temp.startsWith(path));
    // A compact killed after its copy was written, before the copy took the store's name.
    inKilledChild([&] {
        CompactDatabase(path, temp);
        _exit(0);
    });
    ASSERT_TRUE(QFileInfo::exists(temp));
    EXPECT_NE(StoreTemporaryPath(path), temp) << "a second operation takes another name";
    writeBytes(temp + "-journal", "x");
    const QStringList others = {path + ".kmtmpx", path + ".tmp0", dir.filePath("other.kmd.kmtmp0")};
    for (const QString &other : others)
        writeBytes(other, "keep");

    StoreDb::OpenDatabase(path, true, true)->Close();
    EXPECT_TRUE(QFileInfo::exists(temp)) << "a read-only open removes nothing";

    StoreDb::OpenDatabase(path)->Close();
    EXPECT_FALSE(QFileInfo::exists(temp));
    EXPECT_FALSE(QFileInfo::exists(temp + "-journal"));
    for (const QString &other : others)
        EXPECT_TRUE(QFileInfo::exists(other)) << "not an operation's file: " << other.toStdString();
}

// ---- Damaged files ----

namespace {

quint64 varint(const QByteArray &b, qsizetype at, qsizetype *length) {
    quint64 v = 0;
    for (int i = 0; i < 9; ++i) {
        const auto c = static_cast<uchar>(b.at(at + i));
        if (i == 8) {
            v = (v << 8) | c;
            *length = 9;
            return v;
        }
        v = (v << 7) | (c & 0x7f);
        if (!(c & 0x80)) {
            *length = i + 1;
            return v;
        }
    }
    return v;
}

struct Leaf {
    qsizetype offset = 0; // of the page in the file
    int cells = 0;
    quint64 firstId = 0;
    qsizetype lastIdAt = 0; // file offset of the last cell's row id
    qsizetype lastIdLength = 0;
};

// The leaf pages of the table, in the order of their row ids.
QList<Leaf> tableLeaves(const QByteArray &file, qsizetype pageSize) {
    QList<Leaf> leaves;
    for (qsizetype page = 1; page < file.size() / pageSize; ++page) {
        const qsizetype base = page * pageSize;
        if (static_cast<uchar>(file.at(base)) != 0x0d) continue;
        Leaf leaf;
        leaf.offset = base;
        leaf.cells = (static_cast<uchar>(file.at(base + 3)) << 8) | static_cast<uchar>(file.at(base + 4));
        if (leaf.cells < 5) continue; // sqlite_sequence's one row
        const auto cellAt = [&](int i) {
            const qsizetype p = base + 8 + 2 * i;
            return base + ((static_cast<uchar>(file.at(p)) << 8) | static_cast<uchar>(file.at(p + 1)));
        };
        qsizetype n = 0;
        qsizetype at = cellAt(0);
        varint(file, at, &n);
        leaf.firstId = varint(file, at + n, &n);
        at = cellAt(leaf.cells - 1);
        varint(file, at, &n);
        leaf.lastIdAt = at + n;
        varint(file, leaf.lastIdAt, &leaf.lastIdLength);
        leaves << leaf;
    }
    std::sort(leaves.begin(), leaves.end(), [](const Leaf &a, const Leaf &b) { return a.firstId < b.firstId; });
    return leaves;
}

} // namespace

TEST_F(StoreRecoveryTest, RepairEndsOnAFileWhoseDamagedRowIdPointsBackwards) {
    {
        sqlite3 *db = nullptr;
        ASSERT_EQ(sqlite3_open(QFile::encodeName(path).constData(), &db), SQLITE_OK);
        exec(db, "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 400) "
                 "INSERT INTO tt (fEtx, fSec, fSub) SELECT randomblob(100), 20, 1 FROM n");
        sqlite3_close(db);
    }
    QByteArray file = fileBytes(path);
    const qsizetype pageSize = 4096;
    ASSERT_EQ(file.size() % pageSize, 0);
    QList<Leaf> leaves = tableLeaves(file, pageSize);
    // Two neighbouring leaves whose ids take two bytes.
    const auto at = std::find_if(leaves.begin(), leaves.end(), [](const Leaf &l) { return l.firstId >= 128; });
    ASSERT_TRUE(at != leaves.end() && at + 1 != leaves.end());
    ASSERT_EQ(at->lastIdLength, 2);
    // The last row of the one reads as row 1, the next leaf cannot be read.
    file[at->lastIdAt] = char(0x80);
    file[at->lastIdAt + 1] = char(0x01);
    file[(at + 1)->offset] = 0;
    writeBytes(path, file);
    ASSERT_FALSE(StoreIsSound(path));

    int code = -1;
    const bool ended = endsWithin(60, [&] {
        try {
            const RepairReport report = RepairDatabase(path);
            return report.rowsKept > 100 ? 0 : 2;
        } catch (...) {
            return 3;
        }
    }, &code);
    ASSERT_TRUE(ended) << "repair walked the same rows again and again";
    EXPECT_EQ(code, 0) << "the rows before and after the damage are kept";
    EXPECT_TRUE(StoreIsSound(path));
    EXPECT_TRUE(QFileInfo::exists(path + ".damaged"));
}

TEST_F(StoreRecoveryTest, RepairSaysWhenTheResultHoldsNoKeyRows) {
    // These rows are no store's key rows: a repair that keeps them all still
    // yields nothing a session can open.
    QByteArray bytes = fileBytes(path);
    bytes.chop(100);
    writeBytes(path, bytes);
    const RepairReport report = RepairDatabase(path);
    EXPECT_FALSE(report.wasSound);
    EXPECT_TRUE(report.opens);
    EXPECT_FALSE(report.hasKeyRows);
    EXPECT_FALSE(report.usable());
    EXPECT_GT(report.rowsKept, 0);
}
