#include "platform/EngineMaintenance.h"

#include <sqlite3.h>

#include <cstdio>

#include <QFile>
#include <QFileInfo>

#include "platform/Engine.h"

namespace km {

namespace {

struct Db {
    sqlite3 *db = nullptr;
    ~Db() {
        if (db) sqlite3_close_v2(db);
    }
};

struct Stmt {
    sqlite3_stmt *st = nullptr;
    ~Stmt() { sqlite3_finalize(st); }
};

[[noreturn]] void fail(sqlite3 *db, int rc, const QString &what) {
    const int code = rc & 0xff;
    if (code == SQLITE_NOTADB)
        throw EngineError(EngineErr::NotAStore, QStringLiteral("Unrecognized database format."));
    if (code == SQLITE_BUSY || code == SQLITE_LOCKED)
        throw EngineError(EngineErr::AlreadyInUse,
                          QStringLiteral("The database is in use by another program or window."));
    const QString detail = db ? QString::fromUtf8(sqlite3_errmsg(db)) : QString::fromUtf8(sqlite3_errstr(rc));
    throw EngineError(EngineErr::Generic, what + QStringLiteral(": ") + detail);
}

void open(Db &d, const QString &path, int flags) {
    if (!QFileInfo::exists(path))
        throw EngineError(EngineErr::FileNotFound, QStringLiteral("The file does not exist."));
    const int rc = sqlite3_open_v2(QFile::encodeName(path).constData(), &d.db, flags, nullptr);
    if (rc != SQLITE_OK) fail(d.db, rc, QStringLiteral("Opening the file failed"));
    sqlite3_busy_timeout(d.db, 0);
}

QString sqlText(const QString &path) {
    return QString(path).replace('\'', QStringLiteral("''"));
}

void replaceFile(const QString &from, const QString &to) {
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0)
        throw EngineError(EngineErr::Generic,
                          QStringLiteral("The compacted file could not take the store's name."));
}

QString freshPath(const QString &base) {
    for (int i = 0;; ++i) {
        const QString candidate = base + QStringLiteral(".tmp%1").arg(i);
        if (!QFileInfo::exists(candidate)) return candidate;
    }
}

constexpr const char *Columns =
    "fPK, fEtx, fSec, fSub, fR1, fR2, fR3, fR4, fR5, fF1, fF2, fF3, fT1, fT2, fT3, fG1, AE";
constexpr int ColumnCount = 17;

} // namespace

bool StoreIsSound(const QString &path) {
    Db d;
    open(d, path, SQLITE_OPEN_READONLY);
    Stmt s;
    if (sqlite3_prepare_v2(d.db, "PRAGMA integrity_check(1)", -1, &s.st, nullptr) != SQLITE_OK) return false;
    if (sqlite3_step(s.st) != SQLITE_ROW) return false;
    const auto *r = reinterpret_cast<const char *>(sqlite3_column_text(s.st, 0));
    return r && qstrcmp(r, "ok") == 0;
}

void RepairDatabase(const QString &path) {
    {
        Db probe;
        open(probe, path, SQLITE_OPEN_READONLY);
        Stmt s;
        const int rc = sqlite3_prepare_v2(probe.db, "SELECT count(*) FROM sqlite_master", -1, &s.st, nullptr);
        if (rc != SQLITE_OK && (rc & 0xff) != SQLITE_CORRUPT)
            fail(probe.db, rc, QStringLiteral("Reading the file failed"));
    }
    if (StoreIsSound(path)) return;

    const QString rebuilt = freshPath(path);
    StoreDb::CreateDatabase(rebuilt);
    try {
        Db src, dst;
        open(src, path, SQLITE_OPEN_READONLY);
        open(dst, rebuilt, SQLITE_OPEN_READWRITE);
        sqlite3_exec(dst.db, "BEGIN", nullptr, nullptr, nullptr);
        Stmt insert;
        const QByteArray insertSql = QByteArray("INSERT OR IGNORE INTO tt (") + Columns +
                                     ") VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";
        if (sqlite3_prepare_v2(dst.db, insertSql.constData(), -1, &insert.st, nullptr) != SQLITE_OK)
            fail(dst.db, SQLITE_ERROR, QStringLiteral("Writing the repaired file failed"));

        // Walk the rows by id. Where a damaged page stops the walk, step over
        // ids in growing strides until rows can be read again.
        sqlite3_int64 last = 0, maxSeen = 0;
        int misses = 0;
        const QByteArray selectSql = QByteArray("SELECT ") + Columns + " FROM tt WHERE fPK > ? ORDER BY fPK";
        while (misses < 64) {
            Stmt sel;
            if (sqlite3_prepare_v2(src.db, selectSql.constData(), -1, &sel.st, nullptr) != SQLITE_OK) break;
            sqlite3_bind_int64(sel.st, 1, last);
            int rc;
            bool progressed = false;
            while ((rc = sqlite3_step(sel.st)) == SQLITE_ROW) {
                for (int c = 0; c < ColumnCount; ++c)
                    sqlite3_bind_value(insert.st, c + 1, sqlite3_column_value(sel.st, c));
                sqlite3_step(insert.st);
                sqlite3_reset(insert.st);
                last = sqlite3_column_int64(sel.st, 0);
                maxSeen = std::max(maxSeen, last);
                progressed = true;
            }
            if (rc == SQLITE_DONE) break;
            misses = progressed ? 0 : misses + 1;
            last += sqlite3_int64(1) << std::min(misses, 30);
        }
        const QByteArray seq = QByteArray("UPDATE sqlite_sequence SET seq = max(seq, ") +
                               QByteArray::number(maxSeen) + ") WHERE name = 'tt'";
        sqlite3_exec(dst.db, seq.constData(), nullptr, nullptr, nullptr);
        if (sqlite3_exec(dst.db, "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK)
            fail(dst.db, SQLITE_ERROR, QStringLiteral("Writing the repaired file failed"));
    } catch (...) {
        QFile::remove(rebuilt);
        throw;
    }
    const QString keep = path + QStringLiteral(".damaged");
    QFile::remove(keep);
    if (!QFile::rename(path, keep)) {
        QFile::remove(rebuilt);
        throw EngineError(EngineErr::AlreadyInUse,
                          QStringLiteral("The damaged file could not be put aside."));
    }
    replaceFile(rebuilt, path);
}

void CompactDatabase(const QString &source, const QString &destination) {
    Db d;
    open(d, source, SQLITE_OPEN_READONLY);
    const QByteArray sql = QStringLiteral("VACUUM INTO '%1'").arg(sqlText(destination)).toUtf8();
    const int rc = sqlite3_exec(d.db, sql.constData(), nullptr, nullptr, nullptr);
    if (rc != SQLITE_OK) fail(d.db, rc, QStringLiteral("Compacting failed"));
}

void CompactInPlace(const QString &path) {
    const QString temp = freshPath(path);
    try {
        CompactDatabase(path, temp);
    } catch (...) {
        QFile::remove(temp);
        throw;
    }
    replaceFile(temp, path);
}

} // namespace km
