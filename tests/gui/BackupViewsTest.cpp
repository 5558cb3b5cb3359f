// The backup dialogs on a display (offscreen): what they draw of their
// models, and the clicks they hand back.
#include <gtest/gtest.h>

#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTreeWidget>

#include "GuiSupport.h"
#include "gui/backup/BackupViews.h"

namespace {

TEST(BackupViewsTest, RestoreListDrawsItsRowsAndFollowsTheSelection) {
    km::test::startGuiApp();
    QTemporaryDir dir;
    for (const char *name : {"Personal041224170455.kmz", "Personal050101080000.kmz"}) {
        QFile f(dir.filePath(QString::fromLatin1(name)));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    }
    km::frmRestore model;
    model.txtBackupFolder = dir.path();
    model.LoadBackupList();
    km::gui::frmRestore view(model);
    ASSERT_EQ(view.LV->topLevelItemCount(), 2);
    EXPECT_EQ(view.LV->topLevelItem(1)->text(0), QStringLiteral("Personal.kmd"));
    EXPECT_FALSE(view.LV->topLevelItem(1)->text(1).isEmpty());
    EXPECT_TRUE(view.LV->topLevelItem(1)->text(2).isEmpty());
    EXPECT_EQ(view.LV->currentItem(), view.LV->topLevelItem(1));
    EXPECT_EQ(view.txtBackupFolder->toolTip(), dir.path());
    EXPECT_TRUE(view.cmdRestore->isEnabled());
    view.LV->setCurrentItem(view.LV->topLevelItem(0));
    EXPECT_EQ(model.selected, 0);

    // An empty folder: nothing to restore, verify or delete.
    QTemporaryDir empty;
    model.txtBackupFolder = empty.path();
    model.LoadBackupList();
    view.sync();
    EXPECT_EQ(view.LV->topLevelItemCount(), 0);
    EXPECT_FALSE(view.cmdRestore->isEnabled());
    EXPECT_FALSE(view.cmdDelete->isEnabled());
    EXPECT_FALSE(view.cmdVerify->isEnabled());
    view.cmdCancel->click();
    EXPECT_TRUE(model.DialogCancelled);
}

TEST(BackupViewsTest, FolderDialogInBothModes) {
    km::test::startGuiApp();
    km::frmBackup backup;
    backup.txtBackupTo = QStringLiteral("/home/x/Backup");
    km::gui::frmBackup view(backup);
    EXPECT_EQ(view.windowTitle(), QStringLiteral("Backup"));
    EXPECT_EQ(view.cmdBackup->text(), QStringLiteral("Backup"));
    EXPECT_TRUE(view.cmdCancel->isEnabled());
    view.cmdBackup->click();
    EXPECT_EQ(backup.DialogResult, QStringLiteral("/home/x/Backup"));

    km::frmBackup restore(QStringLiteral("/home/x"));
    km::gui::frmBackup restoreView(restore);
    EXPECT_EQ(restoreView.windowTitle(), QStringLiteral("Restore"));
    EXPECT_EQ(restoreView.lblBackup->text(), QStringLiteral("Restore To Folder:"));
    EXPECT_EQ(restoreView.cmdBackup->text(), QStringLiteral("OK"));
    EXPECT_FALSE(restoreView.cmdCancel->isEnabled());
}

} // namespace
