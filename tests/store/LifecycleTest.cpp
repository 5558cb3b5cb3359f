// The store file's life: probing and choosing a file, creating over an old
// one, repair of a damaged or truncated file, compacting, the duplicate sweep,
// the archive file, a store held by another connection, closing and the
// settings file's two values.
#include <gtest/gtest.h>

#include <sqlite3.h>
#include <sys/stat.h>

#include <QSettings>

#include "platform/EngineMaintenance.h"
#include "store/CRY.h"
#include "store/CRYDetail.h"
#include "store/LoginTestSupport.h"
#include "store/Record_Put.h"
#include "ui/LanguageUS.h"

using km::test::RawRow;
using km::test::rowsOf;

namespace {

const QString Pass = QStringLiteral("Kestrel 2024 nest");

QString msg(int row) {
    return LanguageUS::MessageText(row);
}

QByteArray readFile(const QString &path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeFile(const QString &path, const QByteArray &bytes) {
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(bytes);
}

// Whether the engine can still read row pk of a damaged file by its id (a
// truncated file is read as far as it goes).
bool readableById(const QString &file, qint64 pk) {
    sqlite3 *handle = nullptr;
    bool readable = false;
    if (sqlite3_open_v2(QFile::encodeName(file).constData(), &handle, SQLITE_OPEN_READONLY, nullptr) ==
        SQLITE_OK) {
        sqlite3_exec(handle, "PRAGMA writable_schema = ON", nullptr, nullptr, nullptr);
        sqlite3_stmt *st = nullptr;
        if (sqlite3_prepare_v2(handle, "SELECT fEtx, fT1, fT2, fT3 FROM tt WHERE fPK = ?", -1, &st,
                               nullptr) == SQLITE_OK) {
            sqlite3_bind_int64(st, 1, pk);
            readable = sqlite3_step(st) == SQLITE_ROW;
        }
        sqlite3_finalize(st);
    }
    sqlite3_close(handle);
    return readable;
}

class LifecycleTest : public km::test::StoreLifeFixture {
protected:
    // count memos with records of about 600 bytes, so that a page holds a handful.
    void addMemos(int count) {
        for (int i = 0; i < count; ++i) {
            const QString title = QStringLiteral("Memo %1").arg(i, 4, 10, QLatin1Char('0'));
            db::StandardWrite w(db::Store(), 0, 14);
            w.setRecord(Record_Put::PackRecord({{0, Record_Put::tText}, {1, Record_Put::tMemo}},
                                               {title, QString(600, QLatin1Char('a' + i % 26))}));
            w.setText("fT1", title);
            w.Commit({false, true, true, true, true, true, true});
        }
    }
    QStringList memoTitles() {
        QStringList out;
        for (const auto &r : rowsOf(db::Store(), "fSec=14"))
            out << CRY::DecryptField(r.t1);
        return out;
    }
    std::string filesInDir() const {
        return QDir(dir.path()).entryList(QDir::Files, QDir::Name).join(' ').toStdString();
    }
};

// ---- Probing and choosing a file ----

TEST_F(LifecycleTest, AFileOfAnotherKindIsNotRecognisedAndChangesNothing) {
    db::state().DatabasePath = "/stores/previous.kmd";
    db::state().LastUser = "Admin";
    db::SaveRecentFiles();
    const QByteArray settingsBefore = readFile(settingsFile);

    const QString other = dir.filePath("other.kmd");
    {
        sqlite3 *handle = nullptr;
        ASSERT_EQ(sqlite3_open(QFile::encodeName(other).constData(), &handle), SQLITE_OK);
        sqlite3_exec(handle, "CREATE TABLE tt (a, b); INSERT INTO tt VALUES (1, 2);", nullptr, nullptr,
                     nullptr);
        sqlite3_close(handle);
    }
    struct Case {
        const char *name;
        QString file;
    };
    writeFile(dir.filePath("notes.kmd"), "Shopping list\nbread\nmilk\n" + QByteArray(5000, 'x'));
    writeFile(dir.filePath("empty.kmd"), QByteArray());
    const Case cases[] = {
        {"a text file renamed", dir.filePath("notes.kmd")},
        {"an empty file", dir.filePath("empty.kmd")},
        {"a database of another program", other},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const QByteArray before = readFile(c.file);
        ui.shown.clear();
        ui.answerFile(c.file);
        EXPECT_NE(db::ChooseStoreFile(), 0);
        EXPECT_EQ(ui.shown, QStringList({QString("File format not recognized.")}));
        EXPECT_TRUE(db::state().DatabasePath.isEmpty());
        EXPECT_EQ(readFile(c.file), before);
    }
    EXPECT_EQ(readFile(settingsFile), settingsBefore);

    const km::FileDialogSpec &spec = ui.fileDialogs.first();
    EXPECT_EQ(spec.title, "Open");
    EXPECT_EQ(spec.filters, QStringList({"Kestrelmondarin KMD (*.kmd)", "All Files (*.*)"}));
    EXPECT_TRUE(spec.mustExist);

    // A cancelled dialog leaves no path.
    EXPECT_EQ(db::ChooseStoreFile(), km::DialogCancelledError);
    EXPECT_TRUE(db::state().DatabasePath.isEmpty());
}

TEST_F(LifecycleTest, ChoosingAStoreKeepsItsPath) {
    createClosed(Pass);
    db::state().NewStore = true;
    ui.answerFile(path);
    EXPECT_EQ(db::ChooseStoreFile(), 0);
    EXPECT_EQ(db::state().DatabasePath, path);
    EXPECT_FALSE(db::state().NewStore);
    EXPECT_TRUE(ui.shown.isEmpty());
}

// ---- Damage and repair ----

TEST_F(LifecycleTest, ATruncatedStoreOffersRepairAndIsLeftAsItIsOnNo) {
    ASSERT_EQ(create(Pass), 0);
    addMemos(60);
    db::CloseStore();
    const QMap<qint64, RawRow> original = rowsOf(*openRaw());
    QByteArray bytes = fileBytes();
    bytes.truncate(bytes.size() * 2 / 3);
    writeFile(path, bytes);

    db::state().DatabasePath = path;
    ui.answer(km::Answer::No);
    EXPECT_EQ(db::TestOpenFile(path), km::EngineErr::Damaged);
    ASSERT_EQ(ui.shown.size(), 1);
    EXPECT_TRUE(ui.shown.first().endsWith("\r\n\r\n" + QString("DB not usable (Error 103): no keystring.")))
        << ui.shown.first().toStdString();
    EXPECT_GT(ui.shown.first().size(), QString("DB not usable (Error 103): no keystring.").size() + 4)
        << "the engine's text comes first";
    EXPECT_TRUE(db::state().DatabasePath.isEmpty());
    EXPECT_EQ(fileBytes(), bytes);

    // Yes repairs: every row on the whole pages left is kept as it was
    // written; none comes back half zeroed from the cut page.
    db::state().DatabasePath = path;
    ui.answer(km::Answer::Yes);
    EXPECT_EQ(db::TestOpenFile(path), 0);
    EXPECT_EQ(db::state().DatabasePath, path);
    EXPECT_EQ(readFile(path + ".damaged"), bytes);
    EXPECT_TRUE(km::StoreIsSound(path));
    const QString wholePages = dir.filePath("whole-pages");
    writeFile(wholePages, bytes.left(bytes.size() / 4096 * 4096));
    const QMap<qint64, RawRow> repaired = rowsOf(*openRaw());
    for (auto it = original.begin(); it != original.end(); ++it) {
        if (repaired.contains(it.key()))
            EXPECT_EQ(repaired[it.key()], it.value()) << "row " << it.key();
        else
            EXPECT_FALSE(readableById(wholePages, it.key())) << "row " << it.key() << " was readable";
    }
    EXPECT_LT(repaired.size(), original.size());
    EXPECT_FALSE(repaired.isEmpty());
    EXPECT_EQ(filesInDir(), "Personal.kmd Personal.kmd.damaged whole-pages") << "no temporary file is left";
}

TEST_F(LifecycleTest, RepairKeepsEveryReadableRow) {
    ASSERT_EQ(create(Pass), 0);
    addMemos(240);
    db::CloseStore();
    QMap<qint64, RawRow> original = rowsOf(*openRaw());

    // Spoil one page in the middle of the table, where memo 120 lies.
    QByteArray bytes = fileBytes();
    const RawRow &victim = *std::next(original.begin(), original.size() / 2);
    const qsizetype at = bytes.indexOf(victim.etx);
    ASSERT_GT(at, 0);
    const qsizetype page = at / 4096 * 4096;
    for (int i = 0; i < 16; ++i)
        bytes[page + i] = char(0xff);
    writeFile(path, bytes);
    ASSERT_FALSE(km::StoreIsSound(path));

    db::state().DatabasePath = path;
    ASSERT_EQ(db::RepairStore(), 0);
    const QMap<qint64, RawRow> repaired = rowsOf(*openRaw());
    QList<qint64> lost;
    for (auto it = original.begin(); it != original.end(); ++it) {
        if (repaired.contains(it.key()))
            EXPECT_EQ(repaired[it.key()], it.value()) << "row " << it.key();
        else
            lost << it.key();
    }
    EXPECT_EQ(repaired.size() + lost.size(), original.size()) << "no row appears from nowhere";
    EXPECT_FALSE(lost.isEmpty());
    for (qint64 pk : lost)
        EXPECT_FALSE(readableById(path + ".damaged", pk)) << "row " << pk << " was readable";
    EXPECT_LE(lost.size(), 8) << "one page of rows";

    // New rows never take the id of a lost one.
    ASSERT_EQ(open(Pass), 0);
    addMemos(1);
    const qint64 newest = rowsOf(db::Store()).lastKey();
    EXPECT_GT(newest, original.lastKey());
}

TEST_F(LifecycleTest, RepairLeavesASoundStoreAsItIs) {
    createClosed(Pass);
    const QByteArray before = fileBytes();
    db::state().DatabasePath = path;
    EXPECT_EQ(db::RepairStore(), 0);
    EXPECT_EQ(fileBytes(), before);
    EXPECT_FALSE(QFile::exists(path + ".damaged"));
}

TEST_F(LifecycleTest, CompactingKeepsEveryRowAndTheStoreOpens) {
    ASSERT_EQ(create(Pass), 0);
    addMemos(200);
    db::Store().Execute("DELETE * FROM tt WHERE fSec=14 And fPK>60;");
    db::CloseStore();
    const qint64 sizeBefore = QFileInfo(path).size();

    ASSERT_EQ(open(Pass), 0);
    const auto before = rowsOf(db::Store());
    db::CompactInPlace();
    ASSERT_TRUE(db::state().StoreDb) << "the store is open again";
    EXPECT_EQ(db::state().StoreDb->Path(), path);
    EXPECT_EQ(rowsOf(db::Store()), before);
    const QStringList titles = memoTitles();
    db::CloseStore();
    EXPECT_LT(QFileInfo(path).size(), sizeBefore);
    EXPECT_EQ(filesInDir(), "Personal.kmd settings.ini") << "no temporary file is left";

    ASSERT_EQ(open(Pass), 0);
    EXPECT_EQ(memoTitles(), titles);
    EXPECT_FALSE(titles.isEmpty());
}

// ---- File modes ----

namespace {

unsigned modeOf(const QString &file) {
    struct stat st {};
    return ::stat(QFile::encodeName(file).constData(), &st) == 0 ? st.st_mode & 07777 : 0;
}

// The process's file mode mask for the time of a test.
struct Umask {
    mode_t old;
    explicit Umask(mode_t mask) : old(::umask(mask)) {}
    ~Umask() { ::umask(old); }
};

} // namespace

TEST_F(LifecycleTest, TheStoreItsLogItsCopiesItsFolderAndTheSettingsAreTheOwnersAlone) {
    // A mask that lets others read, as where the program's start-up has not
    // set one: the store's own code makes these files private.
    const Umask lax(022);
    path = dir.filePath("Kestrelmondarin/Data/Personal.kmd");
    ASSERT_EQ(create(Pass), 0);
    addMemos(60);
    EXPECT_EQ(modeOf(dir.filePath("Kestrelmondarin")), 0700u);
    EXPECT_EQ(modeOf(dir.filePath("Kestrelmondarin/Data")), 0700u);
    EXPECT_EQ(modeOf(path), 0600u);
    ASSERT_TRUE(QFile::exists(path + "-wal"));
    EXPECT_EQ(modeOf(path + "-wal"), 0600u);
    if (QFile::exists(path + "-shm")) {
        EXPECT_EQ(modeOf(path + "-shm"), 0600u);
    }

    db::CloseStore();
    km::CompactInPlace(path);
    EXPECT_EQ(modeOf(path), 0600u) << "the compacted copy that takes the store's place";
    db::SaveRecentFiles();
    EXPECT_EQ(modeOf(settingsFile), 0600u);

    // A store that an earlier version left readable by others is private
    // once it is opened for writing, and so is its log.
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0644), 0);
    ASSERT_EQ(open(Pass), 0);
    EXPECT_EQ(modeOf(path), 0600u);
    EXPECT_EQ(modeOf(path + "-wal"), 0600u);
    db::CloseStore();

    // Repair: the rebuilt store and the damaged one put aside.
    QByteArray bytes = fileBytes();
    bytes.truncate(bytes.size() * 2 / 3);
    writeFile(path, bytes);
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0644), 0);
    db::state().DatabasePath = path;
    ASSERT_EQ(db::RepairStore(), 0);
    EXPECT_EQ(modeOf(path), 0600u);
    EXPECT_EQ(modeOf(path + ".damaged"), 0600u);
}

// ---- The duplicate sweep ----

TEST_F(LifecycleTest, TheSweepRemovesCopiesInUserSectionsOnly) {
    ASSERT_EQ(create(Pass), 0);
    // (section, fT1) of rows added; an empty text stands for Null.
    const QList<QPair<int, QByteArray>> added = {
        {14, "A"}, {14, "B"}, {14, "A"}, {14, "C"}, {14, "A"}, {14, "B"}, {14, ""}, {14, ""}, {11, "A"},
        {11, "A"}, {15, "C"}, {10, "D"}, {10, "D"}, {3, "E"},  {3, "E"},  {1, "F"}, {1, "F"},
    };
    const auto before = rowsOf(db::Store());
    {
        auto rows = db::Store().OpenRowSet("tt");
        for (const auto &[sec, t1] : added) {
            rows->AddNew();
            rows->SetColumn("fSec", sec);
            rows->SetColumn("fSub", 9);
            rows->SetColumn("fT1", t1.isEmpty() ? QVariant::fromValue(nullptr) : QVariant(t1));
            rows->Update();
        }
    }
    const auto all = rowsOf(db::Store());
    EXPECT_EQ(db::SweepDuplicates(), 4);

    const auto left = rowsOf(db::Store());
    QMap<int, QList<QByteArray>> bySection;
    for (const auto &r : left)
        if (!before.contains(r.pk)) bySection[r.sec] << r.t1;
    EXPECT_EQ(bySection.value(14), QList<QByteArray>({"A", "B", "C", {}, {}}));
    EXPECT_EQ(bySection.value(11), QList<QByteArray>({"A"}));
    EXPECT_EQ(bySection.value(15), QList<QByteArray>({"C"}));
    EXPECT_EQ(bySection.value(10), QList<QByteArray>({"D", "D"}));
    EXPECT_EQ(bySection.value(3), QList<QByteArray>({"E", "E"}));
    EXPECT_EQ(bySection.value(1), QList<QByteArray>({"F", "F"}));
    for (const auto &r : left)
        EXPECT_EQ(all.value(r.pk), r) << "the first row of each value stays as it was";
    EXPECT_EQ(db::SweepDuplicates(), 0);
}

// ---- Creating, the archive, a store in use ----

TEST_F(LifecycleTest, CreatingOverAnExistingFileReplacesIt) {
    writeFile(path, "an older file of the same name");
    ASSERT_EQ(create(Pass), 0);
    db::CloseStore();
    EXPECT_EQ(open(Pass), 0);
    const km::SecureBytes first = CRY::state().KeyTable;
    db::CloseStore();

    // An old store is replaced as well: a new key table under the new passphrase.
    ASSERT_EQ(create("Another 99 pass"), 0);
    EXPECT_NE(CRY::state().KeyTable, first);
    db::CloseStore();
    ui.mainUp = true;
    type(Pass);
    type(Pass);
    EXPECT_EQ(open(Pass), Passphrase::ErrWrongPassphrase);

    // A name without an extension gets ".kmd"; the save dialog is asked when no path is fixed.
    ui.answerFile(dir.filePath("Plain"));
    typeNew(Pass);
    ASSERT_EQ(db::CreateStore(), 0);
    EXPECT_EQ(db::state().DatabasePath, dir.filePath("Plain.kmd"));
    EXPECT_TRUE(QFile::exists(dir.filePath("Plain.kmd")));
    const km::FileDialogSpec &spec = ui.fileDialogs.last();
    EXPECT_EQ(spec.title, msg(89));
    EXPECT_EQ(spec.filters, QStringList({"Tavernholt KMD-files (*.kmd)"}));
    EXPECT_TRUE(spec.overwritePrompt);
    db::CloseStore();

    EXPECT_EQ(db::CreateStore(), km::DialogCancelledError);
}

TEST_F(LifecycleTest, TheArchiveLiesBesideTheStoreWithItsLastLetterChanged) {
    createClosed(Pass);
    db::state().DatabasePath = path;
    const QString archive = db::NewArchiveFile();
    EXPECT_EQ(archive, dir.filePath("Personal.kma"));
    EXPECT_EQ(archive.chopped(1), path.chopped(1));
    {
        auto store = km::StoreDb::OpenDatabase(archive);
        auto rows = store->OpenRowSet("tt");
        EXPECT_EQ(rows->RecordCount(), 0);
        rows->AddNew();
        rows->SetColumn("fSec", 12);
        rows->Update();
    }
    EXPECT_EQ(db::NewArchiveFile(), archive);
    EXPECT_EQ(km::StoreDb::OpenDatabase(archive)->OpenRowSet("tt")->RecordCount(), 1) << "an archive is kept";
    EXPECT_TRUE(ui.shown.isEmpty());

    writeFile(dir.filePath("blocker"), "a file where a folder should be");
    db::state().DatabasePath = dir.filePath("blocker/Personal.kmd");
    EXPECT_EQ(db::NewArchiveFile(), QString());
    EXPECT_EQ(ui.shown, QStringList({msg(154)}));
}

TEST_F(LifecycleTest, AStoreHeldOpenIsRefusedToASecondOpenAndStaysSound) {
    ASSERT_EQ(create(Pass), 0);
    addMemos(5);
    try {
        km::StoreDb::OpenDatabase(path);
        ADD_FAILURE() << "a second open succeeded";
    } catch (const km::EngineError &e) {
        EXPECT_EQ(e.number(), km::EngineErr::AlreadyInUse);
    }
    try {
        km::StoreDb::OpenDatabase(path, false, true);
        ADD_FAILURE() << "a second reader got in";
    } catch (const km::EngineError &e) {
        EXPECT_EQ(e.number(), km::EngineErr::AlreadyInUse);
    }
    db::CloseStore();

    // The other way round: the session is the second one.
    const auto before = storedRows();
    {
        auto holder = openRaw();
        ui.shown.clear();
        ui.answer(km::Answer::OK);
        ui.answer(km::Answer::Cancel);
        EXPECT_THROW(open(Pass), km::ProgramEnd);
        ASSERT_EQ(ui.shown.size(), 3);
        EXPECT_TRUE(ui.shown.at(0).startsWith("Fatal Error #102\r\n"));
        EXPECT_TRUE(ui.shown.at(0).contains("in use")) << ui.shown.at(0).toStdString();
        EXPECT_EQ(ui.shown.at(1), QString("Opening database unsuccessful."));
        EXPECT_EQ(ui.shown.at(2), LanguageUS::MessageText(95)) << "Cancel: the opening was aborted";
        EXPECT_FALSE(CRY::KeyTableLoaded());
    }
    db::ExitProgram();
    EXPECT_EQ(storedRows(), before);
    EXPECT_TRUE(km::StoreIsSound(path));
    EXPECT_EQ(open(Pass), 0);
    EXPECT_EQ(memoTitles().size(), 5);
}

// ---- Closing ----

TEST_F(LifecycleTest, AfterCloseNoKeyMaterialIsLeft) {
    ASSERT_EQ(create(Pass), 0);
    addMemos(40);
    memoTitles(); // fills the schedule cache
    const km::SecureBytes table = CRY::state().KeyTable;
    ASSERT_EQ(table.size(), 270u);
    ASSERT_GT(CRY::CachedSchedules(), 0);

    db::CloseStore();
    const auto allZero = [](const km::SecureBytes &b) {
        return std::all_of(b.begin(), b.end(), [](std::uint8_t x) { return x == 0; });
    };
    const CRY::State &c = CRY::state();
    EXPECT_EQ(c.KeyTable, km::SecureBytes(1, 0));
    EXPECT_FALSE(CRY::KeyTableLoaded());
    EXPECT_LE(c.FieldKey.size(), 1u);
    EXPECT_TRUE(allZero(c.FieldKey));
    EXPECT_LE(c.PlainBytes.size(), 1u);
    EXPECT_TRUE(allZero(c.PlainBytes));
    EXPECT_EQ(CRY::CachedSchedules(), 0);
    EXPECT_TRUE(CRY::scheduleCache().holdsNoKeyMaterial());

    const Passphrase::State &p = Passphrase::state();
    EXPECT_TRUE(p.PassphraseRaw.isEmpty());
    EXPECT_TRUE(p.PassKey.empty() && p.PassCheck.empty() && p.MasterSecret.empty());
    const Users::State &u = Users::state();
    EXPECT_TRUE(u.User.PassHash.empty() && u.User.SealedMaster.empty());
    EXPECT_TRUE(u.Pin.isEmpty());
    EXPECT_FALSE(db::state().StoreDb);
    EXPECT_FALSE(db::state().DbOpen);

    // Nothing a field operation could still reach decrypts under the old table.
    EXPECT_TRUE(CRY::EncryptField(QStringLiteral("x")).isEmpty());
}

TEST_F(LifecycleTest, TheLastStoreAndUserRoundTripThroughTheSettingsFile) {
    db::LoadRecentFiles();
    EXPECT_TRUE(db::state().DatabasePath.isEmpty()) << "no settings file yet";

    db::state().DatabasePath = "/home/z\u00f6e/My Stores/Personal Data.kmd";
    db::state().LastUser = "Zo\u00eb";
    db::SaveRecentFiles();
    QSettings ini(settingsFile, QSettings::IniFormat);
    EXPECT_EQ(ini.value("MostRecentFiles/1").toString(), "/home/z\u00f6e/My Stores/Personal Data.kmd");
    EXPECT_EQ(ini.value("User/LastUser").toString(), "Zo\u00eb");

    resetSession();
    db::LoadRecentFiles();
    EXPECT_EQ(db::state().DatabasePath, "/home/z\u00f6e/My Stores/Personal Data.kmd");
    EXPECT_EQ(db::state().LastUser, "Zo\u00eb");

    // The program's end writes them after closing the open store.
    resetSession();
    ASSERT_EQ(create(Pass), 0);
    db::ExitProgram();
    EXPECT_FALSE(db::state().StoreDb);
    EXPECT_FALSE(CRY::KeyTableLoaded());
    resetSession();
    db::LoadRecentFiles();
    EXPECT_EQ(db::state().DatabasePath, path);
    EXPECT_EQ(db::state().LastUser, "Admin");
}

// ---- Crashes and repairs that cannot help ----

TEST_F(LifecycleTest, AStoreThatFailsToOpenIsSaidAndNotForgotten) {
    createClosed(Pass);
    db::SaveRecentFiles();
    const QByteArray settingsBefore = readFile(settingsFile);
    writeFile(path, "no longer a store" + QByteArray(5000, 'x'));

    resetSession();
    db::LoadRecentFiles();
    ui.shown.clear();
    EXPECT_EQ(db::TestOpenFile(db::state().DatabasePath), km::EngineErr::NotAStore);
    EXPECT_EQ(ui.shown, QStringList({msg(51)}));
    db::ExitProgram();
    EXPECT_EQ(readFile(settingsFile), settingsBefore) << "the store's path stays remembered";
}

TEST_F(LifecycleTest, ARepairWhoseResultHoldsNoKeysSaysSoInsteadOfRepaired) {
    ASSERT_EQ(create(Pass), 0);
    addMemos(40);
    db::CloseStore();
    {
        sqlite3 *handle = nullptr;
        ASSERT_EQ(sqlite3_open(QFile::encodeName(path).constData(), &handle), SQLITE_OK);
        sqlite3_exec(handle, "DELETE FROM tt WHERE fSec IN (1, 2)", nullptr, nullptr, nullptr);
        sqlite3_close(handle);
    }
    QByteArray bytes = readFile(path);
    bytes.truncate(bytes.size() * 2 / 3);
    writeFile(path, bytes);

    db::state().DatabasePath = path;
    ui.shown.clear();
    ui.answer(km::Answer::Yes);
    EXPECT_NE(db::TestOpenFile(path), 0);
    ASSERT_EQ(ui.shown.size(), 2) << ui.shown.join(" | ").toStdString();
    EXPECT_FALSE(ui.shown.at(1).contains(msg(166)));
    EXPECT_TRUE(ui.shown.at(1).endsWith(msg(46))) << ui.shown.at(1).toStdString();
    EXPECT_TRUE(ui.shown.at(1).contains("rows could be read and were kept"));
    EXPECT_EQ(readFile(path + ".damaged"), bytes);
}

} // namespace
