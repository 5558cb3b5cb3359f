// The SQLite engine behind the cursor interface.
//
// The file. Table tt is created STRICT, so SQLite refuses a value of the
// wrong kind instead of keeping it; range CHECKs stand for the byte, 16-bit
// and 32-bit column types, and the flags hold -1 or 0. The cipher columns are
// ANY: they hold raw bytes (BLOB) while the defaults of fT1 and fT2 are the
// text "0". Eight indexes: the primary key under the constraint name
// "PrimaryKey" (SQLite keeps no separate index for it, the row id is the key)
// and seven indexes named after their columns, fSec to fR5. A session that
// holds the store runs on a write-ahead log and goes back to the rollback
// journal when it closes, so a closed store is exactly one file.
//
// Exclusive use. An exclusive open sets locking_mode=EXCLUSIVE and takes the
// write lock at once (BEGIN EXCLUSIVE; COMMIT keeps it in that mode); from then
// on every other connection, in this process or another, fails with
// AlreadyInUse instead of waiting. A read-only exclusive open holds the
// shared lock: others may read, nobody may write.
//
// Row sets. "tt" as a dynaset is a live cursor that walks the table by fPK
// and reads one row at a time, so opening it costs nothing. A SELECT is read
// into memory when it is opened (prepare once, step, copy); its rows can be
// written when the select list holds fPK and the query doesn't group, each
// write going to tt by fPK. Moving off a row that has a pending AddNew or Edit
// discards it: a pending write is never carried past a move. After Update the
// cursor stays on the written row, also after AddNew, so its fPK can be read
// at any time.
//
// Transactions and AddNew share one stack of savepoints; the outermost
// savepoint is the transaction itself.
#include "platform/Engine.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <set>
#include <utility>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <sqlite3.h>

#include "platform/CodePage1252.h"
#include "platform/Environment.h"
#include "platform/JetSql.h"

namespace km {

EngineError::EngineError(int number, const QString &description)
    : std::runtime_error(description.toStdString()), m_number(number), m_description(description) {}

namespace {

constexpr int kColumnCount = 17;
const char *const kColumnNames[kColumnCount] = {"fPK", "fEtx", "fSec", "fSub", "fR1", "fR2",
                                                "fR3", "fR4",  "fR5",  "fF1",  "fF2", "fF3",
                                                "fT1", "fT2",  "fT3",  "fG1",  "AE"};
enum class ColumnType { Key, Cipher, Byte, Long, Flag, Short };
const ColumnType kColumnTypes[kColumnCount] = {
    ColumnType::Key,   ColumnType::Cipher, ColumnType::Byte,   ColumnType::Byte,   ColumnType::Long,
    ColumnType::Long,  ColumnType::Long,   ColumnType::Long,   ColumnType::Long,   ColumnType::Flag,
    ColumnType::Flag,  ColumnType::Flag,   ColumnType::Cipher, ColumnType::Cipher, ColumnType::Cipher,
    ColumnType::Short, ColumnType::Short};

const char *const kCreateStore = R"(
PRAGMA page_size = 4096;
PRAGMA journal_mode = DELETE;
BEGIN;
CREATE TABLE tt (
  fPK INTEGER CONSTRAINT PrimaryKey PRIMARY KEY AUTOINCREMENT,
  fEtx ANY,
  fSec INTEGER DEFAULT 0 CONSTRAINT fSec_range CHECK (fSec BETWEEN 0 AND 255),
  fSub INTEGER DEFAULT 0 CONSTRAINT fSub_range CHECK (fSub BETWEEN 0 AND 255),
  fR1 INTEGER DEFAULT 0 CONSTRAINT fR1_range CHECK (fR1 BETWEEN -2147483648 AND 2147483647),
  fR2 INTEGER DEFAULT 0 CONSTRAINT fR2_range CHECK (fR2 BETWEEN -2147483648 AND 2147483647),
  fR3 INTEGER DEFAULT 0 CONSTRAINT fR3_range CHECK (fR3 BETWEEN -2147483648 AND 2147483647),
  fR4 INTEGER DEFAULT 0 CONSTRAINT fR4_range CHECK (fR4 BETWEEN -2147483648 AND 2147483647),
  fR5 INTEGER DEFAULT 0 CONSTRAINT fR5_range CHECK (fR5 BETWEEN -2147483648 AND 2147483647),
  fF1 INTEGER DEFAULT 0 CONSTRAINT fF1_range CHECK (fF1 IN (0, -1)),
  fF2 INTEGER DEFAULT 0 CONSTRAINT fF2_range CHECK (fF2 IN (0, -1)),
  fF3 INTEGER DEFAULT 0 CONSTRAINT fF3_range CHECK (fF3 IN (0, -1)),
  fT1 ANY DEFAULT '0',
  fT2 ANY DEFAULT '0',
  fT3 ANY,
  fG1 INTEGER CONSTRAINT fG1_range CHECK (fG1 BETWEEN -32768 AND 32767),
  AE INTEGER CONSTRAINT AE_range CHECK (AE BETWEEN -32768 AND 32767)
) STRICT;
CREATE INDEX fSec ON tt (fSec);
CREATE INDEX fSub ON tt (fSub);
CREATE INDEX fR1 ON tt (fR1);
CREATE INDEX fR2 ON tt (fR2);
CREATE INDEX fR3 ON tt (fR3);
CREATE INDEX fR4 ON tt (fR4);
CREATE INDEX fR5 ON tt (fR5);
COMMIT;
)";

// What the query planner is told of tt's columns, whatever the rows really
// hold: a section code or sub-kind picks out many rows, a plain number in fR1
// to fR4 almost one. Without it the planner walks a whole section through the
// fSec index where a range of fR3 (a calendar's days) or fR2 (a bucket of the
// sort index) picks out a handful of rows.
const char *const kPlannerFacts = R"(
ANALYZE sqlite_schema;
DELETE FROM sqlite_stat1 WHERE tbl = 'tt';
INSERT INTO sqlite_stat1 (tbl, idx, stat) VALUES
  ('tt', NULL, '100000'),
  ('tt', 'fSec', '100000 10000'),
  ('tt', 'fSub', '100000 1000'),
  ('tt', 'fR1', '100000 2'),
  ('tt', 'fR2', '100000 2'),
  ('tt', 'fR3', '100000 2'),
  ('tt', 'fR4', '100000 2'),
  ('tt', 'fR5', '100000 50000');
ANALYZE sqlite_schema;
)";

bool hasPlannerFacts(sqlite3 *db) {
    sqlite3_stmt *st = nullptr;
    if (sqlite3_prepare_v2(db, "SELECT count(*) FROM sqlite_stat1 WHERE tbl = 'tt'", -1, &st, nullptr) !=
        SQLITE_OK)
        return false;
    const bool have = sqlite3_step(st) == SQLITE_ROW && sqlite3_column_int(st, 0) > 0;
    sqlite3_finalize(st);
    return have;
}

// Cursor queries of the live row set over tt.
const QString kFirstRow = QStringLiteral("SELECT * FROM tt ORDER BY fPK LIMIT 1");
const QString kLastRow = QStringLiteral("SELECT * FROM tt ORDER BY fPK DESC LIMIT 1");
const QString kRowAfter = QStringLiteral("SELECT * FROM tt WHERE fPK > ?1 ORDER BY fPK LIMIT 1 OFFSET ?2");
const QString kRowBefore =
    QStringLiteral("SELECT * FROM tt WHERE fPK < ?1 ORDER BY fPK DESC LIMIT 1 OFFSET ?2");
const QString kRowByKey = QStringLiteral("SELECT * FROM tt WHERE fPK = ?1");
const QString kRowCount = QStringLiteral("SELECT count(*) FROM tt");
const QString kRowsBefore = QStringLiteral("SELECT count(*) FROM tt WHERE fPK < ?1");
const QString kAnyRow = QStringLiteral("SELECT 1 FROM tt LIMIT 1");

int tableColumn(const QString &name) {
    for (int i = 0; i < kColumnCount; ++i) {
        if (name.compare(QLatin1String(kColumnNames[i]), Qt::CaseInsensitive) == 0) return i;
    }
    return -1;
}

const QVariant &nullValue() {
    static const QVariant value = QVariant::fromValue(nullptr);
    return value;
}

bool isNullValue(const QVariant &v) {
    return !v.isValid() || v.typeId() == QMetaType::Nullptr;
}

[[noreturn]] void fail(int number, const QString &description) {
    throw EngineError(number, description);
}

// The column a constraint message names: "CHECK constraint failed: fSec_range",
// "cannot store TEXT value in INTEGER column tt.fR1".
QString constraintColumn(const QString &message) {
    QString last = message.section(QLatin1Char(' '), -1).section(QLatin1Char('.'), -1);
    if (last.endsWith(QLatin1String("_range"))) last.chop(6);
    const int c = tableColumn(last);
    return c >= 0 ? QString::fromLatin1(kColumnNames[c]) : QString();
}

// Turns an SQLite failure into the engine's error. SQLite's own messages
// name columns and tables at most, never a value; they pass on only where
// they say something the number doesn't.
[[noreturn]] void raise(sqlite3 *db, int rc) {
    const QString message = db ? QString::fromUtf8(sqlite3_errmsg(db)) : QString();
    switch (rc & 0xff) {
    case SQLITE_CORRUPT:
        fail(EngineErr::Damaged, QStringLiteral("The database file is damaged."));
    case SQLITE_NOTADB:
        fail(EngineErr::NotAStore,
             QStringLiteral("Unrecognized database format: the file is not a database of this program."));
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        fail(EngineErr::AlreadyInUse, QStringLiteral("The database is in use by another program or window."));
    case SQLITE_READONLY:
        fail(EngineErr::ReadOnly, QStringLiteral("The database is open read-only."));
    case SQLITE_CONSTRAINT: {
        if (rc == SQLITE_CONSTRAINT_DATATYPE)
            fail(EngineErr::DataTypeConversion,
                 QStringLiteral("Data type conversion error: a value of the wrong kind."));
        if (rc == SQLITE_CONSTRAINT_PRIMARYKEY || rc == SQLITE_CONSTRAINT_UNIQUE ||
            rc == SQLITE_CONSTRAINT_ROWID)
            fail(EngineErr::DuplicateKey, QStringLiteral("The row id is taken by another row."));
        const QString column = constraintColumn(message);
        fail(EngineErr::Constraint, column.isEmpty()
                                        ? QStringLiteral("A value does not fit its field.")
                                        : QStringLiteral("The value does not fit the field %1.").arg(column));
    }
    case SQLITE_MISMATCH:
        fail(EngineErr::DataTypeConversion, QStringLiteral("Data type conversion error."));
    case SQLITE_FULL:
        fail(EngineErr::Generic, QStringLiteral("The disk is full."));
    case SQLITE_CANTOPEN:
        fail(EngineErr::Generic, QStringLiteral("The database file could not be opened."));
    case SQLITE_ERROR:
        if (message.startsWith(QLatin1String("no such column")) ||
            message.contains(QLatin1String("has no column named")))
            fail(EngineErr::ItemNotFound,
                 QStringLiteral("Unknown column: %1.").arg(message.section(QLatin1Char(' '), -1)));
        if (message.startsWith(QLatin1String("no such table")))
            fail(EngineErr::TableNotFound,
                 QStringLiteral("Unknown table: %1.").arg(message.section(QLatin1Char(' '), -1)));
        if (message.contains(QLatin1String("syntax error")))
            fail(EngineErr::SyntaxError, QStringLiteral("Syntax error in the query."));
        fail(EngineErr::Generic, message.isEmpty() ? QStringLiteral("The database engine failed.") : message);
    default:
        fail(EngineErr::Generic, QString::fromUtf8(sqlite3_errstr(rc)));
    }
}

// Closes a connection that is not handed on (open failed half way).
struct Connection {
    sqlite3 *db = nullptr;
    Connection() = default;
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection() {
        if (db) sqlite3_close_v2(db);
    }
    sqlite3 *release() { return std::exchange(db, nullptr); }
};

void execute(sqlite3 *db, const char *sql) {
    const int rc = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
    if (rc != SQLITE_OK) raise(db, rc);
}

// Opens and configures a connection: extended codes, no waiting on locks,
// no double-quoted string literals (a misspelt "name" must fail, not become
// text), and the dialect's SQL functions.
void openConnection(Connection &con, const QString &path, int flags) {
    const int rc =
        sqlite3_open_v2(QFile::encodeName(path).constData(), &con.db, flags | SQLITE_OPEN_EXRESCODE, nullptr);
    if (rc != SQLITE_OK) raise(con.db, rc);
    sqlite3_extended_result_codes(con.db, 1);
    sqlite3_db_config(con.db, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_db_config(con.db, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    sqlite3_busy_timeout(con.db, 0);
    const int frc = JetSql::RegisterFunctions(con.db);
    if (frc != SQLITE_OK) raise(con.db, frc);
}

struct Finalizer {
    sqlite3_stmt *st = nullptr;
    ~Finalizer() { sqlite3_finalize(st); }
};

// A store has table tt with exactly the columns of the store, in order.
void verifyStore(sqlite3 *db) {
    Finalizer f;
    int rc = sqlite3_prepare_v2(db, "PRAGMA table_info(tt)", -1, &f.st, nullptr);
    if (rc != SQLITE_OK) raise(db, rc);
    int i = 0;
    bool same = true;
    while ((rc = sqlite3_step(f.st)) == SQLITE_ROW) {
        const auto *name = reinterpret_cast<const char *>(sqlite3_column_text(f.st, 1));
        same = same && i < kColumnCount && name && std::strcmp(name, kColumnNames[i]) == 0;
        ++i;
    }
    if (rc != SQLITE_DONE) raise(db, rc);
    if (!same || i != kColumnCount)
        fail(EngineErr::NotAStore,
             QStringLiteral("Unrecognized database format: the file holds no table of this program."));
}

// Walks every page of the file once: damage anywhere is found at the open,
// where it goes to repair, not in the middle of the session.
void quickCheck(sqlite3 *db) {
    Finalizer f;
    int rc = sqlite3_prepare_v2(db, "PRAGMA quick_check(1)", -1, &f.st, nullptr);
    if (rc != SQLITE_OK) raise(db, rc);
    rc = sqlite3_step(f.st);
    if (rc != SQLITE_ROW) raise(db, rc);
    const auto *result = reinterpret_cast<const char *>(sqlite3_column_text(f.st, 0));
    if (!result || std::strcmp(result, "ok") != 0)
        fail(EngineErr::Damaged, QStringLiteral("The database file is damaged."));
}

// A column as the cursor interface gives it: cipher columns as bytes whatever
// SQLite holds, NULL as a Null variant, integers as qint64.
QVariant readValue(sqlite3_stmt *st, int c, bool cipher) {
    const int type = sqlite3_column_type(st, c);
    if (type == SQLITE_NULL) return nullValue();
    if (cipher || type == SQLITE_BLOB) {
        const void *data = type == SQLITE_BLOB ? sqlite3_column_blob(st, c) : sqlite3_column_text(st, c);
        const int size = sqlite3_column_bytes(st, c);
        return QByteArray(data ? static_cast<const char *>(data) : "", size);
    }
    switch (type) {
    case SQLITE_INTEGER:
        return QVariant(static_cast<qint64>(sqlite3_column_int64(st, c)));
    case SQLITE_FLOAT:
        return QVariant(sqlite3_column_double(st, c));
    default:
        return QString::fromUtf8(reinterpret_cast<const char *>(sqlite3_column_text(st, c)),
                                 sqlite3_column_bytes(st, c));
    }
}

void bindValue(sqlite3_stmt *st, int i, const QVariant &v) {
    if (isNullValue(v)) {
        sqlite3_bind_null(st, i);
        return;
    }
    switch (v.typeId()) {
    case QMetaType::Bool:
        sqlite3_bind_int64(st, i, v.toBool() ? -1 : 0);
        return;
    case QMetaType::QByteArray: {
        const QByteArray b = v.toByteArray();
        sqlite3_bind_blob64(st, i, b.isNull() ? "" : b.constData(), static_cast<sqlite3_uint64>(b.size()),
                            SQLITE_TRANSIENT);
        return;
    }
    case QMetaType::Double:
    case QMetaType::Float:
        sqlite3_bind_double(st, i, v.toDouble());
        return;
    case QMetaType::QString: {
        const QByteArray utf8 = v.toString().toUtf8();
        sqlite3_bind_text64(st, i, utf8.constData(), static_cast<sqlite3_uint64>(utf8.size()),
                            SQLITE_TRANSIENT, SQLITE_UTF8);
        return;
    }
    default:
        sqlite3_bind_int64(st, i, v.toLongLong());
    }
}

[[noreturn]] void conversionError(const char *column) {
    fail(EngineErr::DataTypeConversion,
         QStringLiteral("Data type conversion error: the value does not suit the field %1.")
             .arg(QLatin1String(column)));
}

// A number for an integer column: fractions round to the nearest whole
// number, halves to the even one, as assignment to a whole-number field does.
qint64 wholeNumber(double d, const char *column) {
    const double r = std::nearbyint(d);
    if (!std::isfinite(r) || r < -9223372036854775808.0 || r >= 9223372036854775808.0)
        conversionError(column);
    return static_cast<qint64>(r);
}

// What SetColumn stores for column c of tt.
QVariant toStored(int c, const QVariant &value) {
    if (isNullValue(value)) return nullValue();
    const char *column = kColumnNames[c];
    const ColumnType type = kColumnTypes[c];
    const int id = value.typeId();
    if (type == ColumnType::Cipher) {
        switch (id) {
        case QMetaType::QByteArray:
            return value;
        case QMetaType::QString:
            return cp1252::toBytes(value.toString());
        case QMetaType::Bool:
            return QByteArray(value.toBool() ? "True" : "False");
        default:
            if (!value.canConvert<QString>()) conversionError(column);
            return value.toString().toLatin1();
        }
    }
    qint64 n = 0;
    switch (id) {
    case QMetaType::Bool:
        n = value.toBool() ? -1 : 0;
        break;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        n = value.toLongLong();
        break;
    case QMetaType::ULongLong:
        if (value.toULongLong() > static_cast<qulonglong>(std::numeric_limits<qint64>::max()))
            conversionError(column);
        n = value.toLongLong();
        break;
    case QMetaType::Double:
    case QMetaType::Float:
        n = wholeNumber(value.toDouble(), column);
        break;
    case QMetaType::QString:
    case QMetaType::QByteArray: {
        const QString text = value.toString().trimmed();
        bool ok = false;
        n = text.toLongLong(&ok);
        if (!ok) {
            const double d = text.toDouble(&ok);
            if (!ok) conversionError(column);
            n = wholeNumber(d, column);
        }
        break;
    }
    default:
        conversionError(column);
    }
    if (type == ColumnType::Flag) n = n != 0 ? -1 : 0;
    return QVariant(n);
}

[[noreturn]] void noCurrentRecord() {
    fail(EngineErr::NoCurrentRecord, QStringLiteral("No current record."));
}

} // namespace

// ==================================================================== StoreDb::Impl

struct StoreDb::Impl {
    sqlite3 *db = nullptr;
    QString path;
    struct Frame {
        quint64 id;
        bool transaction; // BeginTrans rather than AddNew
    };
    std::vector<Frame> frames;
    quint64 nextFrame = 1;
    std::set<RowSet::Impl *> rowSets;
    QHash<QString, sqlite3_stmt *> statements;
    int statementsInUse = 0;
    bool walMode = false;
    QHash<quint32, QString> updateTexts; // by the mask of the columns written

    // "UPDATE tt SET a = ?1, b = ?2 WHERE fPK = ?3" for a set of columns, made
    // once: whole buckets of the sort index are renumbered through it.
    const QString &updateSql(quint32 mask) {
        auto it = updateTexts.find(mask);
        if (it != updateTexts.end()) return *it;
        QStringList sets;
        int n = 0;
        for (int col = 0; col < kColumnCount; ++col)
            if (mask & (quint32(1) << col))
                sets << QStringLiteral("%1 = ?%2").arg(QLatin1String(kColumnNames[col])).arg(++n);
        return *updateTexts.insert(mask, QStringLiteral("UPDATE tt SET %1 WHERE fPK = ?%2")
                                             .arg(sets.join(QStringLiteral(", ")))
                                             .arg(n + 1));
    }

    ~Impl() { close(); }

    void requireOpen() const {
        if (!db) fail(EngineErr::ObjectClosed, QStringLiteral("The database is closed."));
    }

    // Prepared statements are kept for the life of the connection, keyed by
    // their text: the cursor runs the same few queries over and over.
    sqlite3_stmt *prepare(const QString &sql) {
        if (sqlite3_stmt *cached = statements.value(sql)) return cached;
        if (statementsInUse == 0 && statements.size() >= 256) clearStatements();
        const QByteArray utf8 = sql.toUtf8();
        sqlite3_stmt *st = nullptr;
        const char *tail = nullptr;
        const int rc = sqlite3_prepare_v3(db, utf8.constData(), static_cast<int>(utf8.size()),
                                          SQLITE_PREPARE_PERSISTENT, &st, &tail);
        if (rc != SQLITE_OK) raise(db, rc);
        if (!st)
            fail(EngineErr::SyntaxError,
                 QStringLiteral("Syntax error in the query: the statement is empty."));
        if (tail && QByteArray(tail).trimmed().size() > 0) {
            sqlite3_finalize(st);
            fail(EngineErr::SyntaxError,
                 QStringLiteral("Syntax error in the query: more than one statement."));
        }
        statements.insert(sql, st);
        return st;
    }

    void clearStatements() {
        for (sqlite3_stmt *st : std::as_const(statements))
            sqlite3_finalize(st);
        statements.clear();
    }

    // One use of a prepared statement: reset and unbound again at the end of
    // the scope, so no read stays pending between calls of the interface.
    class Statement {
    public:
        Statement(Impl &store, const QString &sql) : m_store(store), m_st(store.prepare(sql)) {
            ++m_store.statementsInUse;
        }
        ~Statement() {
            sqlite3_reset(m_st);
            sqlite3_clear_bindings(m_st);
            --m_store.statementsInUse;
        }
        Statement(const Statement &) = delete;
        Statement &operator=(const Statement &) = delete;
        sqlite3_stmt *get() const { return m_st; }
        void bind(int i, const QVariant &v) { bindValue(m_st, i, v); }
        void bind(int i, qint64 v) { sqlite3_bind_int64(m_st, i, v); }
        bool step() {
            const int rc = sqlite3_step(m_st);
            if (rc == SQLITE_ROW) return true;
            if (rc == SQLITE_DONE) return false;
            raise(m_store.db, rc);
        }
        void reset() { sqlite3_reset(m_st); }
        qint64 integer(int c) const { return sqlite3_column_int64(m_st, c); }

    private:
        Impl &m_store;
        sqlite3_stmt *m_st;
    };

    void exec(const QString &sql) {
        Statement st(*this, sql);
        while (st.step()) {
        }
    }

    // A failed statement may have ended the whole transaction (disk full, I/O
    // error); then no savepoint is left either.
    void syncFrames() {
        if (db && sqlite3_get_autocommit(db)) frames.clear();
    }
    quint64 pushFrame(bool transaction) {
        syncFrames();
        const quint64 id = nextFrame++;
        exec(QStringLiteral("SAVEPOINT km%1").arg(id));
        frames.push_back({id, transaction});
        return id;
    }
    bool hasFrame(quint64 id) {
        syncFrames();
        return std::any_of(frames.begin(), frames.end(), [id](const Frame &f) { return f.id == id; });
    }
    void popFrames(quint64 id) {
        while (!frames.empty()) {
            const quint64 top = frames.back().id;
            frames.pop_back();
            if (top == id) break;
        }
    }
    void releaseFrame(quint64 id) {
        exec(QStringLiteral("RELEASE km%1").arg(id));
        popFrames(id);
    }
    void rollbackFrame(quint64 id) {
        // The outermost level ends with a true ROLLBACK: ROLLBACK TO and RELEASE
        // would commit an empty transaction and so still touch the file's header.
        if (!frames.empty() && frames.front().id == id) {
            exec(QStringLiteral("ROLLBACK"));
            frames.clear();
            return;
        }
        exec(QStringLiteral("ROLLBACK TO km%1").arg(id));
        exec(QStringLiteral("RELEASE km%1").arg(id));
        popFrames(id);
    }
    quint64 innermostTransaction() {
        syncFrames();
        for (auto it = frames.rbegin(); it != frames.rend(); ++it) {
            if (it->transaction) return it->id;
        }
        fail(EngineErr::TransactionError, QStringLiteral("There is no transaction to end."));
    }

    // The rows of tt (17 values) with this fPK; empty if there is none.
    std::vector<QVariant> tableRow(qint64 key) {
        Statement st(*this, kRowByKey);
        st.bind(1, key);
        std::vector<QVariant> row;
        if (st.step()) {
            row.reserve(kColumnCount);
            for (int c = 0; c < kColumnCount; ++c)
                row.push_back(readValue(st.get(), c, kColumnTypes[c] == ColumnType::Cipher));
        }
        return row;
    }

    qint64 copyInto(const JetSql::Translation &tr);
    void close();
};

// ==================================================================== RowSet::Impl

struct RowSet::Impl {
    using Statement = StoreDb::Impl::Statement;

    StoreDb::Impl *store = nullptr; // null once closed
    bool live = false;              // the cursor over tt itself
    bool updatable = false;
    int ncols = 0;
    std::vector<QString> names;
    std::vector<int> tableCols; // the column of tt behind each column, -1 for a computed one
    int keyCol = -1;            // the column that holds fPK

    // A SELECT's rows, row after row, and each row's bookmark (ascending).
    std::vector<QVariant> cells;
    std::vector<qint64> ids;
    qint64 nextId = 1;

    // Position. On a row while neither bof nor eof; "deleted" keeps the place
    // of a deleted row so that MoveNext goes on from it.
    bool bof = true;
    bool eof = true;
    bool deleted = false;
    qint64 index = 0;          // SELECT: the row
    qint64 key = 0;            // live: fPK of the row
    std::vector<QVariant> row; // live: the row

    enum class Mode { Idle, Adding, Editing };
    Mode mode = Mode::Idle;
    std::map<int, QVariant> pending; // by column of tt
    quint64 frame = 0;               // the savepoint of AddNew
    struct Place {
        bool bof, eof, deleted;
        qint64 index, key;
        std::vector<QVariant> row;
    } saved{true, true, false, 0, 0, {}};
    bool noMatch = false;

    StoreDb::Impl &db() const {
        if (!store) fail(EngineErr::ObjectClosed, QStringLiteral("The row set is closed."));
        return *store;
    }
    bool onRow() const { return !bof && !eof; }
    qint64 size() const { return static_cast<qint64>(ids.size()); }
    bool empty() {
        if (!live) return ids.empty();
        Statement st(db(), kAnyRow);
        return !st.step();
    }
    void requireRow() const {
        if (!onRow()) noCurrentRecord();
        if (deleted) fail(EngineErr::RecordDeleted, QStringLiteral("The current record has been deleted."));
    }
    const QVariant &cell(int c) const {
        return live ? row[static_cast<size_t>(c)] : cells[static_cast<size_t>(index * ncols + c)];
    }
    qint64 currentKey() const { return live ? key : cell(keyCol).toLongLong(); }

    // Names match without regard to case. Every section looks its columns up
    // by name on each row, so the common case, ASCII names, is settled here
    // unit by unit; only a name with other characters goes to Qt's case folding.
    static bool sameName(const QString &a, const QString &b) {
        if (a.size() != b.size()) return false; // case folds one UTF-16 unit to one
        const QChar *p = a.constData();
        const QChar *q = b.constData();
        for (qsizetype i = 0; i < a.size(); ++i) {
            const int x = p[i].unicode(), y = q[i].unicode();
            if (x == y) continue;
            if (x >= 0x80 || y >= 0x80) return a.compare(b, Qt::CaseInsensitive) == 0;
            const int lx = x >= 'A' && x <= 'Z' ? x + 32 : x;
            const int ly = y >= 'A' && y <= 'Z' ? y + 32 : y;
            if (lx != ly) return false;
        }
        return true;
    }
    int column(const QString &name) const {
        for (int c = 0; c < ncols; ++c) {
            if (sameName(names[static_cast<size_t>(c)], name)) return c;
        }
        fail(EngineErr::ItemNotFound, QStringLiteral("Item not found in this collection: %1.").arg(name));
    }

    // ---- opening

    void openLive() {
        live = true;
        updatable = true;
        ncols = kColumnCount;
        for (int c = 0; c < kColumnCount; ++c) {
            names.push_back(QString::fromLatin1(kColumnNames[c]));
            tableCols.push_back(c);
        }
        keyCol = 0;
        if (!fetch(kFirstRow)) bof = eof = true;
    }

    void materialise(const QString &sql) {
        Statement st(db(), sql);
        ncols = sqlite3_column_count(st.get());
        std::vector<bool> cipher;
        for (int c = 0; c < ncols; ++c) {
            names.push_back(QString::fromUtf8(sqlite3_column_name(st.get(), c)));
            const char *table = sqlite3_column_table_name(st.get(), c);
            const char *origin = sqlite3_column_origin_name(st.get(), c);
            const int tc =
                table && origin && qstricmp(table, "tt") == 0 ? tableColumn(QString::fromUtf8(origin)) : -1;
            tableCols.push_back(tc);
            cipher.push_back(tc >= 0 && kColumnTypes[tc] == ColumnType::Cipher);
            if (tc == 0 && keyCol < 0) keyCol = c;
        }
        while (st.step()) {
            for (int c = 0; c < ncols; ++c)
                cells.push_back(readValue(st.get(), c, cipher[static_cast<size_t>(c)]));
            ids.push_back(nextId++);
        }
        index = 0;
        bof = eof = ids.empty();
    }

    // ---- moving

    // Live: runs a cursor query and lands on its row, if any.
    bool fetch(const QString &sql, std::optional<qint64> a = std::nullopt,
               std::optional<qint64> b = std::nullopt) {
        Statement st(db(), sql);
        if (a) st.bind(1, *a);
        if (b) st.bind(2, *b);
        if (!st.step()) return false;
        row.clear();
        for (int c = 0; c < kColumnCount; ++c)
            row.push_back(readValue(st.get(), c, kColumnTypes[c] == ColumnType::Cipher));
        key = row[0].toLongLong();
        land();
        return true;
    }
    void land() { bof = eof = deleted = false; }
    void landAt(qint64 i) {
        index = i;
        land();
    }
    void pastEnd() {
        deleted = false;
        eof = true;
        bof = empty();
        if (!live) index = size();
    }
    void beforeStart() {
        deleted = false;
        bof = true;
        eof = empty();
        if (!live) index = -1;
    }
    qint64 indexOf(Bookmark b) const {
        const auto it = std::lower_bound(ids.begin(), ids.end(), b);
        if (it == ids.end() || *it != b)
            fail(EngineErr::InvalidBookmark, QStringLiteral("Not a valid bookmark."));
        return it - ids.begin();
    }

    // Moving off a row discards what AddNew or Edit left pending.
    void leaveRow() {
        if (mode != Mode::Idle) cancel();
    }

    void moveFirst() {
        leaveRow();
        if (live ? !fetch(kFirstRow) : ids.empty()) noCurrentRecord();
        if (!live) landAt(0);
    }
    void moveLast() {
        leaveRow();
        if (live ? !fetch(kLastRow) : ids.empty()) noCurrentRecord();
        if (!live) landAt(size() - 1);
    }
    void moveNext() {
        leaveRow();
        if (eof) noCurrentRecord();
        if (live) {
            const bool found = bof ? fetch(kFirstRow) : fetch(kRowAfter, key, 0);
            if (!found) pastEnd();
            return;
        }
        const qint64 next = bof ? 0 : (deleted ? index : index + 1);
        if (next < size())
            landAt(next);
        else
            pastEnd();
    }
    void movePrevious() {
        leaveRow();
        if (bof) noCurrentRecord();
        if (live) {
            const bool found = eof ? fetch(kLastRow) : fetch(kRowBefore, key, 0);
            if (!found) beforeStart();
            return;
        }
        const qint64 previous = eof ? size() - 1 : index - 1;
        if (previous >= 0)
            landAt(previous);
        else
            beforeStart();
    }
    void move(qint64 offset, std::optional<Bookmark> start) {
        leaveRow();
        qint64 base = 0;
        if (start) {
            base = live ? *start : indexOf(*start);
            if (live && tableRowMissing(*start))
                fail(EngineErr::InvalidBookmark, QStringLiteral("Not a valid bookmark."));
        } else {
            requireRow();
            base = live ? key : index;
        }
        if (live) {
            bool found = false;
            if (offset == 0)
                found = fetch(kRowByKey, base);
            else if (offset > 0)
                found = fetch(kRowAfter, base, offset - 1);
            else
                found = fetch(kRowBefore, base, -offset - 1);
            if (!found) {
                if (offset >= 0)
                    pastEnd();
                else
                    beforeStart();
            }
            return;
        }
        const qint64 target = base + offset;
        if (target < 0)
            beforeStart();
        else if (target >= size())
            pastEnd();
        else
            landAt(target);
    }
    bool tableRowMissing(qint64 k) {
        Statement st(db(), QStringLiteral("SELECT 1 FROM tt WHERE fPK = ?1"));
        st.bind(1, k);
        return !st.step();
    }

    // ---- searching

    void find(const QString &criteria, bool first) {
        leaveRow();
        const QString condition = JetSql::TranslateCondition(criteria);
        if (live) {
            qint64 after = std::numeric_limits<qint64>::min();
            if (!first) {
                if (eof) {
                    noMatch = true;
                    return;
                }
                if (!bof) after = key;
            }
            noMatch = !fetch(QStringLiteral("SELECT * FROM tt WHERE fPK > ?1 AND (%1) ORDER BY fPK LIMIT 1")
                                 .arg(condition),
                             after);
            return;
        }
        qint64 from = 0;
        if (!first) {
            if (eof) {
                noMatch = true;
                return;
            }
            from = bof ? 0 : (deleted ? index : index + 1);
        }
        // The condition is put to SQLite over each row in turn, the row's
        // values bound under the row set's column names.
        QStringList columns;
        for (int c = 0; c < ncols; ++c) {
            QString name = names[static_cast<size_t>(c)];
            name.replace(QLatin1Char('"'), QStringLiteral("\"\""));
            columns << QStringLiteral("?%1 AS \"%2\"").arg(c + 1).arg(name);
        }
        Statement st(db(), QStringLiteral("SELECT CASE WHEN (%1) THEN 1 ELSE 0 END FROM (SELECT %2)")
                               .arg(condition, columns.join(QStringLiteral(", "))));
        for (qint64 i = from; i < size(); ++i) {
            st.reset();
            for (int c = 0; c < ncols; ++c)
                st.bind(c + 1, cells[static_cast<size_t>(i * ncols + c)]);
            if (st.step() && st.integer(0) == 1) {
                noMatch = false;
                landAt(i);
                return;
            }
        }
        noMatch = true;
    }

    // ---- writing

    void requireUpdatable() const {
        db();
        if (!updatable) fail(EngineErr::NotUpdatable, QStringLiteral("The row set cannot be updated."));
    }
    Place place() const { return {bof, eof, deleted, index, key, row}; }
    void restore(const Place &p) {
        bof = p.bof;
        eof = p.eof;
        deleted = p.deleted;
        index = p.index;
        key = p.key;
        row = p.row;
    }

    void addNew() {
        requireUpdatable();
        leaveRow();
        saved = place();
        frame = store->pushFrame(false);
        try {
            store->exec(QStringLiteral("INSERT INTO tt DEFAULT VALUES"));
            const qint64 newKey = sqlite3_last_insert_rowid(store->db);
            if (live) {
                if (!fetch(kRowByKey, newKey)) noCurrentRecord();
            } else {
                const std::vector<QVariant> values = store->tableRow(newKey);
                for (int c = 0; c < ncols; ++c) {
                    const int tc = tableCols[static_cast<size_t>(c)];
                    cells.push_back(tc >= 0 && !values.empty() ? values[static_cast<size_t>(tc)]
                                                               : nullValue());
                }
                ids.push_back(nextId++);
                landAt(size() - 1);
            }
        } catch (...) {
            try {
                if (store->hasFrame(frame)) store->rollbackFrame(frame);
            } catch (...) {
            }
            frame = 0;
            restore(saved);
            throw;
        }
        mode = Mode::Adding;
        pending.clear();
    }

    void edit() {
        requireUpdatable();
        if (mode == Mode::Adding) cancel();
        requireRow();
        mode = Mode::Editing;
        pending.clear();
    }

    void setColumn(const QString &name, const QVariant &value) {
        db();
        if (mode == Mode::Idle)
            fail(EngineErr::UpdateWithoutEdit,
                 QStringLiteral("A field can be set only after AddNew or Edit."));
        const int c = column(name);
        const int tc = tableCols[static_cast<size_t>(c)];
        if (tc < 0)
            fail(EngineErr::NotUpdatable,
                 QStringLiteral("The column %1 is computed and cannot be written.").arg(name));
        if (kColumnTypes[tc] == ColumnType::Key)
            fail(EngineErr::NotUpdatable, QStringLiteral("The row id cannot be written."));
        pending[tc] = toStored(tc, value);
    }

    QVariant value(int c) const {
        db();
        const int tc = tableCols[static_cast<size_t>(c)];
        if (mode != Mode::Idle && tc >= 0) {
            const auto it = pending.find(tc);
            if (it != pending.end()) return it->second;
        }
        requireRow();
        return cell(c);
    }

    void update() {
        db();
        if (mode == Mode::Idle)
            fail(EngineErr::UpdateWithoutEdit, QStringLiteral("Update without AddNew or Edit."));
        requireRow();
        const qint64 k = currentKey();
        if (!pending.empty()) {
            quint32 mask = 0;
            for (const auto &entry : pending)
                mask |= quint32(1) << entry.first;
            Statement st(*store, store->updateSql(mask));
            int n = 0;
            for (const auto &entry : pending)
                st.bind(++n, entry.second);
            st.bind(n + 1, k);
            st.step();
            if (sqlite3_changes64(store->db) == 0)
                fail(EngineErr::RecordDeleted,
                     QStringLiteral("The record has been deleted in the meantime."));
        }
        const bool added = mode == Mode::Adding;
        if (added && store->hasFrame(frame)) store->releaseFrame(frame);
        frame = 0;
        mode = Mode::Idle;
        if (added || live) {
            pending.clear();
            refresh(k);
            return;
        }
        // An edited row of a SELECT holds what was just written: the values are
        // already in their stored form, so the row need not be read back (the
        // sort index renumbers whole buckets through here).
        for (int col = 0; col < ncols; ++col) {
            const auto it = pending.find(tableCols[static_cast<size_t>(col)]);
            if (it != pending.end()) cells[static_cast<size_t>(index * ncols + col)] = it->second;
        }
        pending.clear();
    }

    // Reads the written row back, so the cursor shows what the file holds.
    // Computed columns of a SELECT keep the values of the open.
    void refresh(qint64 k) {
        if (live) {
            if (!fetch(kRowByKey, k)) deleted = true;
            return;
        }
        const std::vector<QVariant> values = store->tableRow(k);
        if (values.empty()) return;
        for (int c = 0; c < ncols; ++c) {
            const int tc = tableCols[static_cast<size_t>(c)];
            if (tc >= 0) cells[static_cast<size_t>(index * ncols + c)] = values[static_cast<size_t>(tc)];
        }
    }

    void cancel() {
        if (mode == Mode::Adding) {
            const quint64 f = std::exchange(frame, 0);
            mode = Mode::Idle;
            pending.clear();
            if (!live) {
                cells.resize(cells.size() - static_cast<size_t>(ncols));
                ids.pop_back();
            }
            restore(saved);
            if (store && store->hasFrame(f)) store->rollbackFrame(f);
            return;
        }
        mode = Mode::Idle;
        pending.clear();
    }

    void remove() {
        requireUpdatable();
        leaveRow();
        requireRow();
        Statement st(*store, QStringLiteral("DELETE FROM tt WHERE fPK = ?1"));
        st.bind(1, currentKey());
        st.step();
        if (!live) {
            const auto first = cells.begin() + static_cast<std::ptrdiff_t>(index * ncols);
            cells.erase(first, first + ncols);
            ids.erase(ids.begin() + static_cast<std::ptrdiff_t>(index));
        }
        deleted = true;
    }

    qint64 absolutePosition() {
        db();
        if (!onRow() || deleted) return -1;
        if (!live) return index;
        Statement st(*store, kRowsBefore);
        st.bind(1, key);
        st.step();
        return st.integer(0);
    }

    qint64 recordCount() {
        db();
        if (!live) return size();
        Statement st(*store, kRowCount);
        st.step();
        return st.integer(0);
    }

    void close() {
        if (!store) return;
        try {
            leaveRow();
        } catch (...) {
            // The savepoint went with the transaction around it; nothing is left to undo.
        }
        store->rowSets.erase(this);
        store = nullptr;
        cells.clear();
        ids.clear();
        row.clear();
    }
};

// ==================================================================== StoreDb::Impl, continued

void StoreDb::Impl::close() {
    if (!db) return;
    const std::set<RowSet::Impl *> open = rowSets;
    for (RowSet::Impl *rs : open)
        rs->close();
    clearStatements();
    // Back to a plain rollback journal, so the closed store is one file that
    // any reader, read-only ones included, can open as it is.
    if (walMode) {
        sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
        sqlite3_exec(db, "PRAGMA journal_mode = DELETE", nullptr, nullptr, nullptr);
    }
    sqlite3_close_v2(db); // rolls back whatever transaction is still open
    db = nullptr;
    frames.clear();
}

// INSERT INTO tt IN "path" SELECT ...: SQLite can't attach a file inside a
// transaction, and the store runs this statement in one, so the rows are
// copied over a second connection to the other file, in a transaction of its
// own there. Columns are matched by name.
qint64 StoreDb::Impl::copyInto(const JetSql::Translation &tr) {
    if (!QFileInfo::exists(tr.attachPath))
        fail(EngineErr::FileNotFound, QStringLiteral("The database file to insert into was not found."));
    Connection target;
    openConnection(target, tr.attachPath, SQLITE_OPEN_READWRITE);
    verifyStore(target.db);

    Statement source(*this, tr.source);
    QStringList columns = tr.columns;
    const int count = sqlite3_column_count(source.get());
    if (columns.isEmpty()) {
        for (int c = 0; c < count; ++c)
            columns << QString::fromUtf8(sqlite3_column_name(source.get(), c));
    }
    if (columns.size() != count)
        fail(EngineErr::SyntaxError,
             QStringLiteral("Syntax error in the query: the numbers of columns differ."));
    QStringList quoted, marks;
    for (int c = 0; c < count; ++c) {
        QString name = columns[c];
        name.replace(QLatin1Char('"'), QStringLiteral("\"\""));
        quoted << QLatin1Char('"') + name + QLatin1Char('"');
        marks << QStringLiteral("?%1").arg(c + 1);
    }
    QString table = tr.table;
    table.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    const QByteArray insertSql =
        QStringLiteral("INSERT INTO \"%1\" (%2) VALUES (%3)")
            .arg(table, quoted.join(QStringLiteral(", ")), marks.join(QStringLiteral(", ")))
            .toUtf8();
    Finalizer insert;
    int rc = sqlite3_prepare_v2(target.db, insertSql.constData(), -1, &insert.st, nullptr);
    if (rc != SQLITE_OK) raise(target.db, rc);

    execute(target.db, "BEGIN IMMEDIATE");
    qint64 rows = 0;
    try {
        while (source.step()) {
            for (int c = 0; c < count; ++c)
                sqlite3_bind_value(insert.st, c + 1, sqlite3_column_value(source.get(), c));
            rc = sqlite3_step(insert.st);
            if (rc != SQLITE_DONE) raise(target.db, rc);
            sqlite3_reset(insert.st);
            ++rows;
        }
        execute(target.db, "COMMIT");
    } catch (...) {
        sqlite3_exec(target.db, "ROLLBACK", nullptr, nullptr, nullptr);
        throw;
    }
    return rows;
}

// ==================================================================== RowSet

RowSet::RowSet(std::unique_ptr<Impl> impl) : d(std::move(impl)) {}

RowSet::~RowSet() {
    try {
        d->close();
    } catch (...) {
    }
}

void RowSet::FindFirst(const QString &criteria) {
    d->find(criteria, true);
}
void RowSet::FindNext(const QString &criteria) {
    d->find(criteria, false);
}
bool RowSet::NoMatch() const {
    return d->noMatch;
}

void RowSet::AddNew() {
    d->addNew();
}
void RowSet::Edit() {
    d->edit();
}
void RowSet::SetColumn(const QString &name, const QVariant &value) {
    d->setColumn(name, value);
}
void RowSet::Update() {
    d->update();
}
void RowSet::CancelUpdate() {
    d->db();
    d->cancel();
}
void RowSet::Delete() {
    d->remove();
}

QVariant RowSet::GetColumn(const QString &name) const {
    return d->value(d->column(name));
}
QVariant RowSet::GetColumn(int index) const {
    if (index < 0 || index >= d->ncols)
        fail(EngineErr::ItemNotFound, QStringLiteral("Item not found in this collection."));
    return d->value(index);
}
int RowSet::ColumnCount() const {
    return d->ncols;
}
QString RowSet::ColumnName(int index) const {
    if (index < 0 || index >= d->ncols)
        fail(EngineErr::ItemNotFound, QStringLiteral("Item not found in this collection."));
    return d->names[static_cast<size_t>(index)];
}

void RowSet::MoveFirst() {
    d->db();
    d->moveFirst();
}
void RowSet::MoveLast() {
    d->db();
    d->moveLast();
}
void RowSet::MoveNext() {
    d->db();
    d->moveNext();
}
void RowSet::MovePrevious() {
    d->db();
    d->movePrevious();
}
void RowSet::Move(qint64 offset, std::optional<Bookmark> start) {
    d->db();
    d->move(offset, start);
}
Bookmark RowSet::GetBookmark() const {
    d->db();
    d->requireRow();
    return d->live ? d->key : d->ids[static_cast<size_t>(d->index)];
}
void RowSet::SetBookmark(Bookmark b) {
    d->db();
    d->leaveRow();
    if (d->live) {
        if (!d->fetch(kRowByKey, b))
            fail(EngineErr::InvalidBookmark, QStringLiteral("Not a valid bookmark."));
    } else {
        d->landAt(d->indexOf(b));
    }
}
qint64 RowSet::AbsolutePosition() const {
    return d->absolutePosition();
}
bool RowSet::Eof() const {
    return d->eof;
}
bool RowSet::Bof() const {
    return d->bof;
}
qint64 RowSet::RecordCount() const {
    return d->recordCount();
}
void RowSet::Close() {
    d->close();
}

// ==================================================================== StoreDb

QStringList StoreSideFiles(const QString &path) {
    return {path + QStringLiteral("-journal"), path + QStringLiteral("-wal"), path + QStringLiteral("-shm")};
}

namespace {

// Bytes 18 and 19 of the header are 2 while the file is in write-ahead mode:
// a session was killed before it went back to the rollback journal.
bool headerInLogMode(const QString &path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return false;
    const QByteArray header = f.read(20);
    return header.size() == 20 && header.startsWith("SQLite format 3") && header.at(18) == 2;
}

const QLatin1String kTemporarySuffix(".kmtmp");

} // namespace

bool StoreNeedsRecovery(const QString &path) {
    const QStringList side = StoreSideFiles(path);
    return QFileInfo::exists(side.at(0)) || QFileInfo::exists(side.at(1)) || headerInLogMode(path);
}

void RecoverStore(const QString &path) {
    if (!QFileInfo(path).isFile() || !StoreNeedsRecovery(path)) return;
    try {
        Connection con;
        openConnection(con, path, SQLITE_OPEN_READWRITE);
        if (sqlite3_db_readonly(con.db, "main") == 1)
            fail(EngineErr::ReadOnly, QString());
        // The first read rolls a hot journal back; leaving write-ahead mode
        // writes the log into the file and deletes it with its index.
        execute(con.db, "SELECT count(*) FROM sqlite_master");
        execute(con.db, "PRAGMA journal_mode = DELETE");
        const int rc = sqlite3_close(con.release());
        if (rc != SQLITE_OK) fail(EngineErr::Generic, QString::fromUtf8(sqlite3_errstr(rc)));
    } catch (const EngineError &e) {
        if (e.number() == EngineErr::ReadOnly)
            fail(EngineErr::ReadOnly,
                 QStringLiteral("The store was left unfinished by a program that ended abruptly. It is "
                                "completed when it is opened where the file and its folder can be written."));
        throw;
    }
    // A journal that was not hot (an empty one) stays behind the close.
    const QString journal = StoreSideFiles(path).at(0);
    if (QFileInfo::exists(journal) && QFileInfo(journal).size() == 0) QFile::remove(journal);
}

QString StoreTemporaryPath(const QString &path) {
    for (int i = 0;; ++i) {
        const QString candidate = path + kTemporarySuffix + QString::number(i);
        if (!QFileInfo::exists(candidate)) return candidate;
    }
}

int RemoveStoreTemporaries(const QString &path) {
    const QFileInfo store(path);
    const QDir folder = store.absoluteDir();
    const QString prefix = store.fileName() + kTemporarySuffix;
    int removed = 0;
    for (const QString &name : folder.entryList({prefix + QLatin1Char('*')}, QDir::Files | QDir::Hidden)) {
        // Only the operation's own names: the prefix and a number, and the
        // side files SQLite may have left beside such a file.
        QString rest = name.mid(prefix.size());
        for (const char *side : {"-journal", "-wal", "-shm"})
            if (rest.endsWith(QLatin1String(side))) rest.chop(static_cast<qsizetype>(std::strlen(side)));
        bool number = false;
        rest.toUInt(&number);
        if (number && QFile::remove(folder.filePath(name))) ++removed;
    }
    return removed;
}

StoreDb::StoreDb(std::unique_ptr<Impl> impl) : d(std::move(impl)) {}

StoreDb::~StoreDb() = default;

void StoreDb::CreateDatabase(const QString &path) {
    if (QFileInfo::exists(path))
        fail(EngineErr::FileExists, QStringLiteral("The database file exists already."));
    try {
        // The file is made empty and private first, so that the store is
        // never readable by others, not even for a moment; SQLite takes an
        // empty file as an empty database. Where that fails, SQLite's own
        // open says why.
        CreatePrivateFile(path);
        Connection con;
        openConnection(con, path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
        execute(con.db, kCreateStore);
        execute(con.db, kPlannerFacts);
        const int rc = sqlite3_close(con.release());
        if (rc != SQLITE_OK) fail(EngineErr::Generic, QString::fromUtf8(sqlite3_errstr(rc)));
        KeepPrivate(path);
    } catch (...) {
        QFile::remove(path);
        throw;
    }
}

std::unique_ptr<StoreDb> StoreDb::OpenDatabase(const QString &path, bool exclusive, bool readOnly) {
    const QFileInfo info(path);
    if (!info.exists()) fail(EngineErr::FileNotFound, QStringLiteral("The database file was not found."));
    if (!info.isFile())
        fail(EngineErr::NotAStore, QStringLiteral("Unrecognized database format: not a file."));
    RecoverStore(path);
    // SQLite gives its log the store's mode: a store written by an earlier
    // version, readable by others, becomes private before it gets one.
    if (!readOnly) KeepPrivate(path);
    Connection con;
    openConnection(con, path, readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE);
    if (exclusive) {
        execute(con.db, "PRAGMA locking_mode = EXCLUSIVE");
        if (!readOnly) execute(con.db, "BEGIN EXCLUSIVE; COMMIT");
    }
    verifyStore(con.db);
    // Held alone and for writing: no compact or repair can be at work on
    // the store, so copies that one left when it was killed can go.
    if (exclusive && !readOnly) RemoveStoreTemporaries(path);
    quickCheck(con.db);
    // While a session holds the store alone, commits go to a write-ahead log
    // (in exclusive locking mode, so without a shared-memory file): a save
    // then waits for no disk flush, and the log is replayed at the next open
    // should the program die before it is folded back in.
    const bool wal = exclusive && !readOnly;
    if (wal && !hasPlannerFacts(con.db)) execute(con.db, kPlannerFacts);
    if (wal) {
        execute(con.db, "PRAGMA journal_mode = WAL");
        execute(con.db, "PRAGMA synchronous = NORMAL");
        // Saves rewrite the same pages again and again (a bucket of the sort
        // index at a time); a longer log folds them back in far fewer writes.
        execute(con.db, "PRAGMA wal_autocheckpoint = 8192");
    }
    auto impl = std::make_unique<Impl>();
    impl->walMode = wal;
    impl->db = con.release();
    impl->path = path;
    return std::unique_ptr<StoreDb>(new StoreDb(std::move(impl)));
}

std::unique_ptr<StoreDb> StoreDb::OpenImage(const QByteArray &image) {
    if (image.size() < 100 || !image.startsWith(QByteArray("SQLite format 3\0", 16)))
        fail(EngineErr::NotAStore,
             QStringLiteral("Unrecognized database format: the file is not a database of this program."));
    Connection con;
    openConnection(con, QStringLiteral(":memory:"), SQLITE_OPEN_READWRITE);
    const auto size = static_cast<sqlite3_int64>(image.size());
    auto *buffer = static_cast<unsigned char *>(sqlite3_malloc64(static_cast<sqlite3_uint64>(size)));
    if (!buffer) fail(EngineErr::Generic, QStringLiteral("Out of memory."));
    std::memcpy(buffer, image.constData(), static_cast<size_t>(size));
    // A store that was open with a log says so in its header; in memory there
    // is no log, and the pages read the same with the header's legacy mode.
    buffer[18] = buffer[19] = 1;
    const int rc = sqlite3_deserialize(con.db, "main", buffer, size, size,
                                       SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_READONLY);
    if (rc != SQLITE_OK) raise(con.db, rc);
    verifyStore(con.db);
    quickCheck(con.db);
    auto impl = std::make_unique<Impl>();
    impl->db = con.release();
    return std::unique_ptr<StoreDb>(new StoreDb(std::move(impl)));
}

std::unique_ptr<RowSet> StoreDb::OpenRowSet(const QString &nameOrSql, int kind) {
    d->requireOpen();
    if (kind < 1 || kind > Snapshot) fail(EngineErr::Generic, QStringLiteral("Unknown kind of row set."));
    auto impl = std::make_unique<RowSet::Impl>();
    impl->store = d.get();
    const QString name = nameOrSql.trimmed();
    if (name.compare(QLatin1String("tt"), Qt::CaseInsensitive) == 0 ||
        name.compare(QLatin1String("[tt]"), Qt::CaseInsensitive) == 0) {
        if (kind == Dynaset || kind == 1)
            impl->openLive();
        else
            impl->materialise(QStringLiteral("SELECT * FROM tt ORDER BY fPK"));
    } else {
        const JetSql::Translation tr = JetSql::Translate(nameOrSql);
        if (tr.kind != JetSql::StatementKind::Select)
            fail(EngineErr::SyntaxError, QStringLiteral("Only a SELECT can be opened as a row set."));
        impl->materialise(tr.sql);
        impl->updatable = kind == Dynaset && !tr.grouped && impl->keyCol >= 0;
    }
    d->rowSets.insert(impl.get());
    return std::unique_ptr<RowSet>(new RowSet(std::move(impl)));
}

qint64 StoreDb::Execute(const QString &jetSql) {
    d->requireOpen();
    const JetSql::Translation tr = JetSql::Translate(jetSql);
    if (tr.kind == JetSql::StatementKind::Select)
        fail(EngineErr::CannotExecuteSelect,
             QStringLiteral("A SELECT cannot be executed; open it as a row set."));
    if (tr.kind == JetSql::StatementKind::Insert && !tr.attachPath.isEmpty()) return d->copyInto(tr);
    Impl::Statement st(*d, tr.sql);
    st.step();
    return sqlite3_changes64(d->db);
}

void StoreDb::BeginTrans() {
    d->requireOpen();
    d->pushFrame(true);
}

void StoreDb::CommitTrans() {
    d->requireOpen();
    d->releaseFrame(d->innermostTransaction());
}

void StoreDb::Rollback() {
    d->requireOpen();
    d->rollbackFrame(d->innermostTransaction());
}

int StoreDb::TransactionDepth() const {
    if (!d->db) return 0;
    d->syncFrames();
    return static_cast<int>(std::count_if(d->frames.begin(), d->frames.end(),
                                          [](const Impl::Frame &f) { return f.transaction; }));
}

void StoreDb::Close() {
    d->close();
}
bool StoreDb::IsOpen() const {
    return d->db != nullptr;
}
QString StoreDb::Path() const {
    return d->path;
}
sqlite3 *StoreDb::Handle() const {
    return d->db;
}

} // namespace km
