// The DB menu: what the person can do when no store opened at start.
#include "store/frmMenuDB.h"
#include "LoginTestSupport.h"
#include "ui/LanguageUS.h"

namespace {

class MenuDBTest : public km::test::StoreLifeFixture {};

} // namespace

TEST_F(MenuDBTest, CreatingANewStoreClosesTheMenuWithTheStoreOpen) {
    km::frmMenuDB menu;
    ui.answerFile(path);
    typeNew(QStringLiteral("Horse-battery-9"));
    menu.cmdNewDB_Click();
    EXPECT_TRUE(menu.closeRequested);
    EXPECT_TRUE(db::state().DbOpen);
    EXPECT_TRUE(ui.shown.contains(LanguageUS::MessageText(146)));
}

TEST_F(MenuDBTest, ACancelledCreationShowsTheMenuAgain) {
    km::frmMenuDB menu;
    menu.cmdNewDB_Click(); // the save dialog is cancelled
    EXPECT_FALSE(menu.closeRequested);
    EXPECT_TRUE(menu.visible);
    EXPECT_FALSE(db::state().DbOpen);
}

TEST_F(MenuDBTest, OpeningAnExistingStoreAsksForItsPassphrase) {
    createClosed(QStringLiteral("Horse-battery-9"));
    km::frmMenuDB menu;
    ui.answerFile(path);
    type(QStringLiteral("Horse-battery-9"));
    menu.cmdOldDB_Click();
    EXPECT_TRUE(menu.closeRequested);
    EXPECT_TRUE(db::state().DbOpen);
}

TEST_F(MenuDBTest, AFileThatIsNoStoreKeepsTheMenuUpWhenThereWasNoPathBefore) {
    const QString text = dir.filePath(QStringLiteral("notes.kmd"));
    QFile f(text);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("just some words\n");
    f.close();
    km::frmMenuDB menu;
    ui.answerFile(text);
    menu.cmdOldDB_Click();
    EXPECT_TRUE(ui.shown.contains(LanguageUS::MessageText(51)));
    EXPECT_FALSE(menu.closeRequested);
    EXPECT_TRUE(menu.visible);
}

TEST_F(MenuDBTest, ExitEndsTheProgramOnlyWithoutTheMainWindow) {
    km::frmMenuDB menu;
    EXPECT_THROW(menu.cmdCancel_Click(), km::ProgramEnd);
    km::frmMenuDB second;
    ui.mainUp = true;
    EXPECT_NO_THROW(second.cmdCancel_Click());
    EXPECT_TRUE(second.closeRequested);
}
