// Backup and restore on the main window, headless: the store of the main
// window fixture, the folder dialogs and the questions played by the test.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "backup/Backup.h"
#include "backup/Restore.h"
#include "backup/frmBackup.h"
#include "backup/frmRestore.h"
#include "platform/Registry.h"
#include "shell/MainWindowTestSupport.h"
#include "store/frmMenuDB.h"
#include "ui/LanguageUS.h"

namespace km::test {
namespace {

class BackupTest : public MainWindowFixture {
protected:
    QString backupFolder() const { return dir.filePath(QStringLiteral("Backup")); }
    QString firstBackup() const {
        const QStringList names = QDir(backupFolder()).entryList({QStringLiteral("*.kmz")}, QDir::Files);
        return names.isEmpty() ? QString() : QDir(backupFolder()).filePath(names.first());
    }
    // A backup through the menu command, the folder dialog confirmed.
    void backUp() {
        ui.onModal<frmBackup>([](frmBackup &b) {
            b.cmdBackup_Click();
            return true;
        });
        ASSERT_TRUE(DbBackup(*w));
    }
    // A row only the store as it is now holds, not its backup.
    void markStore() { db::Store().Execute(QStringLiteral("INSERT INTO tt (fSec, fSub) VALUES (99, 1)")); }
    static qint64 marks(const QString &file) {
        auto store = StoreDb::OpenDatabase(file, false, true);
        return store->OpenRowSet(QStringLiteral("SELECT fPK FROM tt WHERE fSec=99"), Snapshot)->RecordCount();
    }
    bool exists(const char *name) const { return QFile::exists(dir.filePath(QString::fromLatin1(name))); }
};

TEST_F(BackupTest, BackupCompactsWritesTheFileAndReopensWithoutThePassphrase) {
    ASSERT_TRUE(startOpen());
    markStore();
    const int modalsBefore = ui.modalsShown;
    ui.onModal<frmBackup>([this](frmBackup &b) {
        EXPECT_EQ(b.caption(), QStringLiteral("Backup"));
        EXPECT_EQ(b.lblBackup(), QStringLiteral("Backup To Folder:"));
        EXPECT_EQ(b.cmdBackupCaption(), QStringLiteral("Backup"));
        EXPECT_TRUE(b.cmdCancelEnabled());
        // "Backup" beside the store, made and kept before anything is confirmed.
        EXPECT_EQ(b.txtBackupTo, backupFolder());
        EXPECT_TRUE(QFileInfo(backupFolder()).isDir());
        EXPECT_EQ(RegRead(QStringLiteral("BackupPath")), backupFolder());
        b.cmdBackup_Click();
        return true;
    });
    ASSERT_TRUE(DbBackup(*w));

    const QString kmz = QDir(backupFolder()).filePath(QStringLiteral("Personal240301090000.kmz"));
    ASSERT_TRUE(QFile::exists(kmz));
    EXPECT_EQ(ui.shown.last(), LanguageUS::MessageText(136) + QStringLiteral("\nPersonal240301090000.kmz"));
    // The frmBackup dialog was the only window: no passphrase asked.
    EXPECT_EQ(ui.modalsShown, modalsBefore + 1);
    EXPECT_TRUE(db::state().DbOpen);
    EXPECT_TRUE(CRY::KeyTableLoaded());
    EXPECT_TRUE(w->optSectionEnabled);
    EXPECT_TRUE(w->enabled);
    EXPECT_FALSE(desk.waitCursor);
    // The store still works with the keys it had.
    EXPECT_GT(db::Store().OpenRowSet(QStringLiteral("tt"))->RecordCount(), 0);

    ZLib::Backup b;
    ASSERT_EQ(ZLib::ReadBackup(kmz, b), 0);
    EXPECT_EQ(b.sourcePath, path);
    // The backup holds the compacted store as it was, the mark included.
    const QString copy = dir.filePath(QStringLiteral("copy.kmd"));
    ASSERT_TRUE(ZLib::WriteFileWhole(copy, b.store));
    EXPECT_EQ(marks(copy), 1);
}

TEST_F(BackupTest, CancelLeavesTheStoreClosedAndNoFile) {
    ASSERT_TRUE(startOpen());
    ui.onModal<frmBackup>([](frmBackup &b) {
        b.cmdCancel_Click();
        return false;
    });
    EXPECT_FALSE(DbBackup(*w));
    EXPECT_FALSE(db::state().DbOpen);
    EXPECT_FALSE(CRY::KeyTableLoaded());
    EXPECT_TRUE(firstBackup().isEmpty());
    EXPECT_TRUE(w->optSectionEnabled);
    EXPECT_TRUE(w->enabled);
}

TEST_F(BackupTest, WithNoStoreOpenItAsksForTheFileAndEndsInTheDbMenu) {
    ASSERT_TRUE(startOpen());
    w->CloseStore();
    db::state().DatabasePath.clear();
    ui.answerFile(path);
    bool menuShown = false;
    ui.onModal<frmBackup>([](frmBackup &b) {
        b.cmdBackup_Click();
        return true;
    });
    ui.onModal<frmMenuDB>([&](frmMenuDB &) { return menuShown = true, false; });
    EXPECT_TRUE(DbBackup(*w));
    EXPECT_TRUE(menuShown);
    EXPECT_FALSE(firstBackup().isEmpty());
    EXPECT_FALSE(db::state().DbOpen);
}

TEST_F(BackupTest, RestorePutsTheBackupInPlaceAndKeepsTheReplacedStore) {
    ASSERT_TRUE(startOpen());
    backUp();
    markStore();
    ui.shown.clear();
    ui.onModal<frmRestore>([this](frmRestore &r) {
        EXPECT_EQ(r.txtBackupFolder, backupFolder());
        EXPECT_EQ(r.LV.size(), 1u);
        EXPECT_EQ(r.selected, 0);
        EXPECT_EQ(r.LV.at(0).text, QStringLiteral("Personal.kmd"));
        EXPECT_FALSE(r.LV.at(0).stamp.isEmpty());
        EXPECT_TRUE(r.LV.at(0).dimensions.isEmpty());
        r.cmdRestore_Click();
        return r.acceptedResult;
    });
    // The original still stands: the folder dialog in its Restore mode.
    ui.onModal<frmBackup>([this](frmBackup &b) {
        EXPECT_TRUE(b.restoreMode());
        EXPECT_EQ(b.caption(), QStringLiteral("Restore"));
        EXPECT_EQ(b.lblBackup(), QStringLiteral("Restore To Folder:"));
        EXPECT_EQ(b.cmdBackupCaption(), QStringLiteral("OK"));
        EXPECT_FALSE(b.cmdCancelEnabled());
        EXPECT_EQ(QDir(b.txtBackupTo), QDir(dir.path()));
        b.cmdBackup_Click();
        return true;
    });
    ui.answer(Answer::OK);  // 138
    ui.answer(Answer::OK);  // 140
    ui.answer(Answer::Yes); // 141
    type(QString::fromLatin1(kPass));
    EXPECT_TRUE(DbRestore(*w));

    EXPECT_EQ(ui.shown, QStringList({LanguageUS::MessageText(138), LanguageUS::MessageText(140),
                                     LanguageUS::MessageText(141)}));
    EXPECT_TRUE(db::state().DbOpen);
    EXPECT_EQ(db::state().DatabasePath, path);
    EXPECT_FALSE(exists("Personal.kmr"));
    ASSERT_TRUE(exists("Personal.kmb"));
    EXPECT_EQ(db::Store().OpenRowSet(QStringLiteral("SELECT fPK FROM tt WHERE fSec=99"), Snapshot)->RecordCount(), 0);
    w->CloseStore();
    EXPECT_EQ(marks(dir.filePath(QStringLiteral("Personal.kmb"))), 1);
}

TEST_F(BackupTest, DamagedBackupsLeaveTheStoreOpenAndEveryFileAsItWas) {
    ASSERT_TRUE(startOpen());
    backUp();
    QFile f(firstBackup());
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QByteArray good = f.readAll();
    f.close();
    QByteArray flipped = good, cut = good.left(good.size() - 9), mark = good;
    flipped[30] = static_cast<char>(flipped.at(30) ^ 0x40);
    mark[mark.size() - 5] = 7;
    for (const QByteArray &bad : {flipped, cut, mark}) {
        ASSERT_TRUE(ZLib::WriteFileWhole(firstBackup(), bad));
        ui.shown.clear();
        ui.onModal<frmRestore>([](frmRestore &r) {
            r.cmdRestore_Click();
            EXPECT_FALSE(r.closeRequested);
            r.cmdCancel_Click();
            return false;
        });
        EXPECT_FALSE(DbRestore(*w));
        EXPECT_EQ(ui.shown, QStringList({LanguageUS::MessageText(131)}));
        EXPECT_TRUE(db::state().DbOpen);
        EXPECT_TRUE(exists("Personal.kmd"));
        EXPECT_FALSE(exists("Personal.kmr"));
        EXPECT_FALSE(exists("Personal.kmb"));
    }
}

TEST_F(BackupTest, CancelConfirmedKeepsTheExpandedFileAndTheStoreOpen) {
    ASSERT_TRUE(startOpen());
    backUp();
    ui.onModal<frmRestore>([](frmRestore &r) {
        r.cmdRestore_Click();
        return r.acceptedResult;
    });
    ui.onModal<frmBackup>([](frmBackup &b) {
        b.cmdBackup_Click();
        return true;
    });
    ui.answer(Answer::Cancel); // 138
    ui.answer(Answer::Yes);    // 139: yes, cancel
    EXPECT_FALSE(DbRestore(*w));
    EXPECT_TRUE(db::state().DbOpen);
    EXPECT_TRUE(exists("Personal.kmr"));
    EXPECT_FALSE(exists("Personal.kmb"));
}

TEST_F(BackupTest, ListDeleteAndVerify) {
    ASSERT_TRUE(startOpen());
    backUp();
    clock.advanceSecs(65);
    backUp();
    const SecureBytes keysBefore = CRY::state().KeyTable;
    frmRestore r;
    r.Form_Load();
    ASSERT_EQ(r.LV.size(), 2u);
    EXPECT_EQ(r.selected, 1);
    EXPECT_EQ(r.LV.at(1).tag, QDir(backupFolder()).filePath(QStringLiteral("Personal240301090105.kmz")));

    // Verify asks for the passphrase of the backup and leaves the session's store as it was.
    ui.shown.clear();
    type(QString::fromLatin1(kPass));
    r.cmdVerify_Click();
    EXPECT_EQ(ui.shown, QStringList({QString::fromLatin1(Restore::VerifiedText)}));
    ui.onModal<frmPW>(typing({QStringLiteral("wrong one")}));
    ui.answer(Answer::Cancel);
    r.cmdVerify_Click();
    EXPECT_NE(ui.shown.last(), QString::fromLatin1(Restore::VerifiedText));
    EXPECT_TRUE(CRY::state().KeyTable == keysBefore);
    EXPECT_EQ(db::state().DatabasePath, path);
    EXPECT_GT(db::Store().OpenRowSet(QStringLiteral("tt"))->RecordCount(), 0);

    ui.answer(Answer::No);
    r.cmdDelete_Click();
    EXPECT_EQ(r.LV.size(), 2u);
    ui.answer(Answer::Yes);
    r.cmdDelete_Click();
    EXPECT_EQ(r.LV.size(), 1u);
    EXPECT_FALSE(QFile::exists(QDir(backupFolder()).filePath(QStringLiteral("Personal240301090105.kmz"))));
    ui.answer(Answer::Yes);
    r.cmdDelete_Click();
    EXPECT_FALSE(r.listEnabled());
    ui.shown.clear();
    r.cmdRestore_Click();
    EXPECT_EQ(ui.shown, QStringList({LanguageUS::MessageText(161)}));
}

TEST(BackupListTest, StampsReadBackAndNamesWithoutOne) {
    EXPECT_EQ(StampText(QStringLiteral("Personal041224170455.kmz")),
              QLocale::system().toString(QDate(2004, 12, 24), QLocale::ShortFormat) + QStringLiteral("  ") +
                  QLocale::system().toString(QTime(17, 4, 55), QLocale::ShortFormat));
    EXPECT_TRUE(StampText(QStringLiteral("notes.kmz")).isEmpty());
    EXPECT_TRUE(StampText(QStringLiteral("x041399170455.kmz")).isEmpty());
}

} // namespace
} // namespace km::test
