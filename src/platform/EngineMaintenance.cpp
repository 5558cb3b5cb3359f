#include "platform/EngineMaintenance.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <unordered_set>

#include <QFile>
#include <QFileInfo>
#include <QList>

#include "platform/Engine.h"
#include "platform/Environment.h"

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
    return StoreTemporaryPath(base);
}

// After a new file took the store's name, nothing of the old file may stay
// beside it: SQLite would apply an old log to the new file.
void removeSideFiles(const QString &path) {
    for (const QString &side : StoreSideFiles(path))
        QFile::remove(side);
}

// Whether the file opens as a store and holds its key rows.
void judge(const QString &path, RepairReport &report) {
    try {
        auto store = StoreDb::OpenDatabase(path, false, true);
        report.opens = true;
        bool keyString = false, user = false;
        auto sections = store->OpenRowSet(
            QStringLiteral("SELECT fSec, fSub FROM tt WHERE fSec=1 Or fSec=2"), Snapshot);
        for (; !sections->Eof(); sections->MoveNext()) {
            const int sec = sections->GetColumn("fSec").toInt();
            const int sub = sections->GetColumn("fSub").toInt();
            keyString = keyString || (sec == 1 && (sub == 1 || sub == 2));
            user = user || sec == 2;
        }
        report.hasKeyRows = keyString && user;
        store->Close();
    } catch (const EngineError &) {
        report.opens = false;
    }
}

// The page size in the file's header (0 when the header can't be read).
qint64 pageSizeOf(const QString &path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return 0;
    const QByteArray header = f.read(100);
    if (header.size() < 100 || !header.startsWith("SQLite format 3")) return 0;
    const qint64 value = (static_cast<uchar>(header.at(16)) << 8) | static_cast<uchar>(header.at(17));
    return value == 1 ? 65536 : value;
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

RepairReport RepairDatabase(const QString &path) {
    RepairReport report;
    try {
        RecoverStore(path);
    } catch (const EngineError &e) {
        // A damaged store may refuse its log; the log then goes aside with it.
        if (e.number() == EngineErr::AlreadyInUse) throw;
    }
    {
        Db probe;
        open(probe, path, SQLITE_OPEN_READONLY);
        Stmt s;
        const int rc = sqlite3_prepare_v2(probe.db, "SELECT count(*) FROM sqlite_master", -1, &s.st, nullptr);
        if (rc != SQLITE_OK && (rc & 0xff) != SQLITE_CORRUPT)
            fail(probe.db, rc, QStringLiteral("Reading the file failed"));
    }
    if (!StoreNeedsRecovery(path) && StoreIsSound(path)) {
        report.wasSound = true;
        judge(path, report);
        return report;
    }

    // A file cut off inside a page would have that page's missing end read as
    // zeros, and rows on it would come back with their columns zeroed. The
    // rows are read from a copy that ends at the last whole page instead, so
    // every row kept is a row as it was written.
    QString source = path;
    const qint64 size = QFileInfo(path).size();
    const qint64 pageSize = pageSizeOf(path);
    if (pageSize > 0 && size % pageSize != 0) {
        source = freshPath(path);
        if (!QFile::copy(path, source) || !KeepPrivate(source) ||
            !QFile(source).resize(size / pageSize * pageSize)) {
            QFile::remove(source);
            throw EngineError(EngineErr::Generic, QStringLiteral("The damaged file could not be read."));
        }
    }
    struct RemoveCopy {
        QString copy;
        ~RemoveCopy() {
            if (!copy.isEmpty()) QFile::remove(copy);
        }
    } removeCopy{source == path ? QString() : source};

    const QString rebuilt = freshPath(path);
    StoreDb::CreateDatabase(rebuilt);
    try {
        Db src, dst;
        open(src, source, SQLITE_OPEN_READONLY);
        // A file shorter than its header says (a truncated copy) is refused as
        // a whole, page 1 included, unless the schema counts as writable. On
        // this read-only connection that only lets the pages still there be read.
        sqlite3_exec(src.db, "PRAGMA writable_schema = ON", nullptr, nullptr, nullptr);
        open(dst, rebuilt, SQLITE_OPEN_READWRITE);
        sqlite3_exec(dst.db, "BEGIN", nullptr, nullptr, nullptr);
        Stmt insert;
        const QByteArray insertSql = QByteArray("INSERT OR IGNORE INTO tt (") + Columns +
                                     ") VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";
        if (sqlite3_prepare_v2(dst.db, insertSql.constData(), -1, &insert.st, nullptr) != SQLITE_OK)
            fail(dst.db, SQLITE_ERROR, QStringLiteral("Writing the repaired file failed"));

        // Every id met anywhere, read or not: new rows must not take the id of a lost one.
        sqlite3_int64 maxSeen = 0;
        std::unordered_set<sqlite3_int64> copied;
        const auto copyRow = [&](sqlite3_stmt *row) {
            for (int c = 0; c < ColumnCount; ++c)
                sqlite3_bind_value(insert.st, c + 1, sqlite3_column_value(row, c));
            sqlite3_step(insert.st);
            sqlite3_reset(insert.st);
            const sqlite3_int64 id = sqlite3_column_int64(row, 0);
            if (copied.insert(id).second) ++report.rowsKept;
            maxSeen = std::max(maxSeen, id);
        };

        // Walk the rows by id. Where a damaged page stops the walk, step over
        // ids in growing strides until rows can be read again.
        sqlite3_int64 last = 0;
        int misses = 0;
        const QByteArray selectSql = QByteArray("SELECT ") + Columns + " FROM tt WHERE fPK > ? ORDER BY fPK";
        while (misses < 64) {
            Stmt sel;
            if (sqlite3_prepare_v2(src.db, selectSql.constData(), -1, &sel.st, nullptr) != SQLITE_OK) break;
            sqlite3_bind_int64(sel.st, 1, last);
            int rc;
            bool progressed = false;
            while ((rc = sqlite3_step(sel.st)) == SQLITE_ROW) {
                copyRow(sel.st);
                // A damaged page can hold a row id below the ones before it:
                // the walk goes on from the highest id met, never back.
                const sqlite3_int64 id = sqlite3_column_int64(sel.st, 0);
                if (id > last) {
                    last = id;
                    progressed = true;
                }
            }
            if (rc == SQLITE_DONE) break;
            misses = progressed ? 0 : misses + 1;
            const sqlite3_int64 stride = sqlite3_int64(1) << std::min(misses, 30);
            if (last > std::numeric_limits<sqlite3_int64>::max() - stride) break;
            last += stride;
        }

        // The strides may have stepped over rows on sound pages beyond the
        // damage. Each index still lists the ids of its rows: every id not
        // copied yet is read on its own.
        QList<QByteArray> indexes;
        {
            Stmt names;
            if (sqlite3_prepare_v2(src.db,
                                   "SELECT name FROM sqlite_master WHERE type = 'index' AND tbl_name = 'tt'",
                                   -1, &names.st, nullptr) == SQLITE_OK)
                while (sqlite3_step(names.st) == SQLITE_ROW)
                    indexes << QByteArray(reinterpret_cast<const char *>(sqlite3_column_text(names.st, 0)));
        }
        Stmt byId;
        const QByteArray byIdSql = QByteArray("SELECT ") + Columns + " FROM tt WHERE fPK = ?";
        if (sqlite3_prepare_v2(src.db, byIdSql.constData(), -1, &byId.st, nullptr) == SQLITE_OK) {
            for (const QByteArray &index : indexes) {
                Stmt ids;
                const QByteArray idsSql =
                    "SELECT fPK FROM tt INDEXED BY \"" + QByteArray(index).replace('"', "\"\"") + '"';
                if (sqlite3_prepare_v2(src.db, idsSql.constData(), -1, &ids.st, nullptr) != SQLITE_OK)
                    continue;
                while (sqlite3_step(ids.st) == SQLITE_ROW) {
                    const sqlite3_int64 id = sqlite3_column_int64(ids.st, 0);
                    maxSeen = std::max(maxSeen, id);
                    if (copied.count(id)) continue;
                    sqlite3_bind_int64(byId.st, 1, id);
                    if (sqlite3_step(byId.st) == SQLITE_ROW) copyRow(byId.st);
                    sqlite3_reset(byId.st);
                }
            }
        }
        {
            Stmt seq;
            if (sqlite3_prepare_v2(src.db, "SELECT seq FROM sqlite_sequence WHERE name = 'tt'", -1, &seq.st,
                                   nullptr) == SQLITE_OK &&
                sqlite3_step(seq.st) == SQLITE_ROW)
                maxSeen = std::max(maxSeen, sqlite3_column_int64(seq.st, 0));
        }
        const QByteArray seq = QByteArray("UPDATE sqlite_sequence SET seq = max(seq, ") +
                               QByteArray::number(maxSeen) + ") WHERE name = 'tt'";
        sqlite3_exec(dst.db, seq.constData(), nullptr, nullptr, nullptr);
        if (sqlite3_changes(dst.db) == 0) {
            const QByteArray add = QByteArray("INSERT INTO sqlite_sequence (name, seq) VALUES ('tt', ") +
                                   QByteArray::number(maxSeen) + ")";
            sqlite3_exec(dst.db, add.constData(), nullptr, nullptr, nullptr);
        }
        if (sqlite3_exec(dst.db, "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK)
            fail(dst.db, SQLITE_ERROR, QStringLiteral("Writing the repaired file failed"));
    } catch (...) {
        QFile::remove(rebuilt);
        throw;
    }
    const QString keep = path + QStringLiteral(".damaged");
    QFile::remove(keep);
    for (const QString &side : StoreSideFiles(keep))
        QFile::remove(side);
    if (!QFile::rename(path, keep)) {
        QFile::remove(rebuilt);
        throw EngineError(EngineErr::AlreadyInUse,
                          QStringLiteral("The damaged file could not be put aside."));
    }
    KeepPrivate(keep); // what could be read of the store is still the store's
    // A journal or log the damaged file would not take stays with it.
    const QStringList from = StoreSideFiles(path), to = StoreSideFiles(keep);
    for (qsizetype i = 0; i < from.size(); ++i)
        if (QFileInfo::exists(from.at(i))) QFile::rename(from.at(i), to.at(i));
    replaceFile(rebuilt, path);
    removeSideFiles(path);
    judge(path, report);
    return report;
}

void CompactDatabase(const QString &source, const QString &destination) {
    RecoverStore(source);
    Db d;
    open(d, source, SQLITE_OPEN_READONLY);
    // VACUUM INTO writes into an empty file as into a new one; made here
    // first, the copy is private from its first byte.
    const bool made = !QFileInfo::exists(destination) && CreatePrivateFile(destination);
    const QByteArray sql = QStringLiteral("VACUUM INTO '%1'").arg(sqlText(destination)).toUtf8();
    const int rc = sqlite3_exec(d.db, sql.constData(), nullptr, nullptr, nullptr);
    if (rc != SQLITE_OK) {
        if (made) QFile::remove(destination);
        fail(d.db, rc, QStringLiteral("Compacting failed"));
    }
    KeepPrivate(destination);
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
    removeSideFiles(path);
}

} // namespace km
