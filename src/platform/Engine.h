// The database engine behind the store: one SQLite file holding the table tt,
// reached only through the cursor interface below. SQL handed to
// OpenRowSet and Execute is written in the store's own Jet dialect and
// translated by JetSql before SQLite sees it.
//
// Invariants:
//  1. Every failure is an EngineError carrying an engine number; no sqlite
//     code or message leaks past this interface in any other form.
//  2. A row set over "tt" or over a SELECT of tt that includes fPK is
//     updatable; writes go straight to the file (inside the open transaction,
//     if any).
//  3. AddNew inserts the row at once under a savepoint, so fPK is readable
//     before Update; CancelUpdate, Close or destruction before Update roll the
//     row back as if AddNew had never been called.
//  4. Cipher columns (fEtx, fT1, fT2, fT3) read back as QByteArray whatever
//     SQLite type they hold (the defaults "0" are text); NULL reads as a null
//     QVariant. Integer columns read as qint64.
#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

#include <QString>
#include <QStringList>
#include <QVariant>

struct sqlite3;

namespace km {

// Engine error numbers (the store's routines pass them on unchanged).
namespace EngineErr {
constexpr int Generic = 3000;         // unclassified engine failure
constexpr int NoCurrentRecord = 3021; // cursor before the first or after the last row
constexpr int UpdateWithoutEdit = 3020;
constexpr int FileNotFound = 3024;
constexpr int AlreadyInUse = 3045; // another process holds the store
constexpr int Damaged = 3049;      // the file is a store but damaged: goes to repair
constexpr int ReadOnly = 3027;
constexpr int ItemNotFound = 3265; // unknown column name
constexpr int SyntaxError = 3075;  // the Jet SQL could not be translated
constexpr int NotUpdatable = 3251; // write on a snapshot or a row set without fPK
constexpr int DataTypeConversion = 3421;
constexpr int NotAStore = 3343; // "unrecognised database format": not a store at all
constexpr int FileExists = 3204;
constexpr int TransactionError = 3034;
constexpr int Constraint = 3163;      // value too large for the field (fSec over 255, ...)
constexpr int DuplicateKey = 3022;    // a row id that is there already
constexpr int InvalidBookmark = 3159; // a bookmark of no row of this row set
constexpr int RecordDeleted = 3167;   // the current row has been deleted
constexpr int TableNotFound = 3078;
constexpr int CannotExecuteSelect = 3065; // Execute given a SELECT
constexpr int ObjectClosed = 3420;        // the row set or database has been closed
} // namespace EngineErr

class EngineError : public std::runtime_error {
public:
    EngineError(int number, const QString &description);
    int number() const { return m_number; }
    QString description() const { return m_description; }

private:
    int m_number;
    QString m_description;
};

// Kinds of OpenRowSet.
enum RowSetKind { Dynaset = 2, ForwardOnly = 3, Snapshot = 4 };

using Bookmark = qint64;

class StoreDb;

class RowSet {
public:
    ~RowSet();
    RowSet(const RowSet &) = delete;
    RowSet &operator=(const RowSet &) = delete;

    // Searching (criteria are a Jet WHERE expression, e.g. "fSec=1 And fSub=1").
    void FindFirst(const QString &criteria);
    void FindNext(const QString &criteria);
    bool NoMatch() const;

    // Writing.
    void AddNew();
    void Edit();
    void SetColumn(const QString &name, const QVariant &value);
    void Update();
    void CancelUpdate();
    void Delete();

    // Reading. Names are case-insensitive, as the store's SQL writes them.
    QVariant GetColumn(const QString &name) const;
    QVariant GetColumn(int index) const;
    int ColumnCount() const;
    QString ColumnName(int index) const;

    // Cursor.
    void MoveFirst();
    void MoveLast();
    void MoveNext();
    void MovePrevious();
    void Move(qint64 offset, std::optional<Bookmark> start = std::nullopt);
    Bookmark GetBookmark() const;
    void SetBookmark(Bookmark b);
    qint64 AbsolutePosition() const; // 0-based; -1 when there is no current row
    bool Eof() const;
    bool Bof() const;
    qint64 RecordCount() const;
    void Close();

private:
    friend class StoreDb;
    struct Impl;
    explicit RowSet(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> d;
};

class StoreDb {
public:
    ~StoreDb();
    StoreDb(const StoreDb &) = delete;
    StoreDb &operator=(const StoreDb &) = delete;

    // Builds an empty store file: table tt with its 17 columns, their defaults
    // and the 8 indexes; closed again at once. Fails with FileExists if the
    // file is there already.
    static void CreateDatabase(const QString &path);

    // Opens a store. A file that is not a store at all fails with NotAStore, a
    // store that is damaged with Damaged, a store another process has open
    // with AlreadyInUse, a missing file with FileNotFound. What a killed
    // process left is recovered first (RecoverStore), read-only opens too. A
    // read-only open writes nothing: the file keeps its bytes and its time.
    // An exclusive writable open removes the temporaries of operations that
    // were killed (no other process can be working on the store by then).
    static std::unique_ptr<StoreDb> OpenDatabase(const QString &path, bool exclusive = true,
                                                 bool readOnly = false);

    // Opens, read-only, a store held in memory (a backup's expanded image),
    // with the same tests as OpenDatabase; nothing is written to any file.
    static std::unique_ptr<StoreDb> OpenImage(const QByteArray &image);

    std::unique_ptr<RowSet> OpenRowSet(const QString &nameOrSql, int kind = Dynaset);

    // DELETE / INSERT / UPDATE statements; returns the number of rows affected.
    qint64 Execute(const QString &jetSql);

    // Nestable: the outermost pair is the transaction, inner ones savepoints.
    void BeginTrans();
    void CommitTrans();
    void Rollback();
    int TransactionDepth() const;

    void Close();
    bool IsOpen() const;
    QString Path() const;

    // For maintenance only (integrity check, VACUUM INTO); not for the logic.
    sqlite3 *Handle() const;

private:
    struct Impl;
    explicit StoreDb(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> d;
    friend class RowSet;
};

// ---- A store's side files ----
// Besides the store itself, SQLite keeps a rollback journal ("-journal"), a
// write-ahead log ("-wal") and its index ("-shm") beside it while it writes;
// a process killed mid-write leaves them behind, and they hold committed rows
// (a log) or the way back to the last commit (a journal). Compacting and
// repairing write a new file beside the store first: its temporary files end
// in ".kmtmp" and a number, a name nothing else uses, so that copies left by
// a killed compact (which hold deleted records) can be told apart and removed.

// Folds what a killed process left into the store: a hot journal is rolled
// back, a log is written into the file, and none of the three side files
// remains. Does nothing (and writes nothing) when there is none. Throws
// EngineError when the leftovers cannot be applied (a read-only file or
// folder, another process using the store, a damaged file).
void RecoverStore(const QString &path);
// Whether a killed process left a journal or a log beside the store.
bool StoreNeedsRecovery(const QString &path);
// The side files' names: -journal, -wal, -shm.
QStringList StoreSideFiles(const QString &path);
// A new temporary file name for an operation on the store, beside it.
QString StoreTemporaryPath(const QString &path);
// Removes the temporary files an operation on the store left (those named by
// StoreTemporaryPath); returns how many went.
int RemoveStoreTemporaries(const QString &path);

// One transaction (a savepoint inside another) that is rolled back unless
// it was committed: a write that fails half way leaves the file as it was.
class Transaction {
public:
    explicit Transaction(StoreDb &db) : m_db(db) { m_db.BeginTrans(); }
    ~Transaction() {
        if (m_done) return;
        try {
            m_db.Rollback();
        } catch (...) {
            // The engine error that brought us here is already on its way.
        }
    }
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;
    void Commit() {
        m_db.CommitTrans();
        m_done = true;
    }

private:
    StoreDb &m_db;
    bool m_done = false;
};

} // namespace km
