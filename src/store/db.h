// The store's row helpers: the open store of the session, noise for unused
// columns, and the standard write that every section's save goes through.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <QByteArray>
#include <QString>
#include <QVariant>

#include "platform/Engine.h"
#include "platform/EngineMaintenance.h"

namespace db {

constexpr int ProgramVersion = 201; // written to the version row (1, 3)

// Process-wide state of the open store.
struct State {
    std::unique_ptr<km::StoreDb> StoreDb; // the one open handle of the session
    bool StoreChanged = false;            // a row was added since the last backup
    QString DatabasePath;                 // full path of the store
    QString LastUser;                     // name of the last user
    bool DbOpen = false;                  // the open sequence has finished
    int OpenAttempts = 0;                 // tries in the current open sequence
    bool NewStore = false;                // set after a create, cleared after an open of an old store
    bool RememberRecentFiles = true;      // the command line leaves the program's last store alone
    // The session only reads: the store is opened read-only, nothing is
    // written (no version row, no sweep, no default rows), and the file keeps
    // its bytes and its modification time. Writes fail with the engine's
    // ReadOnly error.
    bool ReadOnly = false;
    // Called by FinishOpen once the store is open, and by CloseStore: the main
    // window enables its commands and puts the file name into its title.
    std::function<void()> AfterOpen;
    std::function<void()> AfterClose;
};
State &state();
// The open store; throws EngineError if none is open.
km::StoreDb &Store();

// The change bits every row writer keeps: a new row is added with AE = 1, a
// row that is there already is edited with AE Or 2.
void AddRow(km::RowSet &rows);
void EditRow(km::RowSet &rows);

// Which columns take noise on a new row.
struct NoiseFlags {
    bool t1 = false, t2 = false, t3 = false;
    bool r1 = false, r2 = false, r3 = false, r4 = false;
};

// Fills the flagged columns of the row being written: fT1 to fT3 with 8, 16
// or 24 random bytes (drawn anew for each), fR1 to fR4 with RandomLong().
void WriteNoise(km::RowSet &rows, const NoiseFlags &flags);

// The standard write of one row, as one transaction:
//   1. find the row by fPK (rowId 0 or a missing id means a new row);
//   2. new: AddNew, fPK known at once, AE = 1, the store-changed flag set;
//      found: the row's section must be the caller's, else message 16
//      "Update impossible" and nothing changes; Edit, AE Or 2;
//   3. the caller sets the payload, the short texts and the plain columns;
//   4. Commit: noise on the flagged columns of a new row, Update, commit.
// A writer dropped without Commit leaves the file as it was, the sort index's
// renumbering of other rows included.
class StandardWrite {
public:
    StandardWrite(km::StoreDb &store, qint64 rowId, int section);
    // The same, finding the row by a criteria text (settings rows: "fSec=5 And fSub=1").
    StandardWrite(km::StoreDb &store, const QString &criteria, int section);
    ~StandardWrite();
    StandardWrite(const StandardWrite &) = delete;
    StandardWrite &operator=(const StandardWrite &) = delete;

    // False when the row belongs to another section (message 16 was shown).
    bool ok() const { return m_ok; }
    bool isNew() const { return m_new; }
    qint64 rowId() const { return m_rowId; }
    km::RowSet &rows() { return *m_rows; }
    // A column's value as it stood before this write (null for a new row).
    QVariant oldColumn(const QString &name) const;
    // DecryptField of a short text column as it stood before (empty for a new row).
    QString oldText(const QString &column) const;

    // fEtx = EncryptField(packed record).
    void setRecord(const QByteArray &packed);
    // A short list text through EncryptField (fT1 to fT3).
    void setText(const QString &column, const QString &plain);
    void setColumn(const QString &column, const QVariant &value);
    // The sort index of an alphabetically sorted section: bucket column =
    // BucketPoint(title), rank column = PlaceInOrder(...). oldTitle is the
    // row's title before this write ("" for a new row).
    void placeInOrder(const QString &title, const QString &oldTitle, const QString &titleColumn = "fT1",
                      const QString &bucketColumn = "fR2", const QString &rankColumn = "fR1",
                      int buckets = 42);

    // Steps 4: noise on a new row, Update, commit. Returns the row id.
    qint64 Commit(const NoiseFlags &noiseOnNewRow = {});

private:
    void begin(const QString &criteria, int section);

    km::StoreDb &m_store;
    std::unique_ptr<km::RowSet> m_rows;
    qint64 m_rowId = 0;
    int m_section = 0;
    bool m_new = false;
    bool m_ok = false;
    bool m_done = false;
    bool m_inTransaction = false;
};

// ---- The store file's life ----

// "MostRecentFiles\\1" and "User\\LastUser" of the settings file.
void LoadRecentFiles();
// The folder where file dialogs for stores start.
QString StoreFolder();
void SaveRecentFiles();
// Opens and closes the file to see that the engine takes it (what a killed
// process left is recovered on the way); offers repair of a damaged one.
// 0 or the error; every other failure is said (message 51 for a file that
// is no store, else the engine's words). An error clears DatabasePath.
int TestOpenFile(const QString &path);
// The file dialog for an existing store, then TestOpenFile.
int ChooseStoreFile();
// A new store from the dialog (or fixedPath) to the first open.
int CreateStore(const QString &fixedPath = QString());
// The empty store file; 0 or the engine's error number.
int CreateStoreFile(const QString &path);
// The open sequence: passphrase, key rows, version test, FinishOpen, sweep.
int OpenStore();
void FinishOpen();
// The version row (1, 3): written with this program's version; the stored one read back (0 if none).
void WriteVersionRow();
int ReadStoreVersion();
int RepairStore();
// The engine's repair of the file at path, then the compacting of it in place.
km::RepairReport RepairDatabase(const QString &path);
// What to tell the person after a repair of path: the rows kept and message
// 166 when the result serves as a store, else message 46 and where the
// damaged file was put.
QString RepairOutcome(const km::RepairReport &report, const QString &path);
void CompactInPlace();
// Removes rows of user sections that carry the same cipher text in fT1.
int SweepDuplicates();
// The archive store beside the store (".kma"); "" on failure (message 154).
QString NewArchiveFile();
// Saves the settings rows (unless told not to), wipes every key, closes the store.
void CloseStore(bool saveSettings = true);
// The store half of the program's end: CloseStore if open, the settings file's values.
void ExitProgram();

} // namespace db
