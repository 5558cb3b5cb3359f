#include <gtest/gtest.h>

#include "shell/SessionGuards.h"
#include "shell/frmOptions.h"
#include "store/LoginTestSupport.h"
#include "support/FakeShell.h"
#include "ui/LanguageUS.h"

namespace {

using km::frmOptions;

const QString Pass = QStringLiteral("correct horse 7");
const QString WrongPass = QStringLiteral("wrong horse 77");

class frmOptionsTest : public km::test::StoreLifeFixture {
protected:
    void SetUp() override {
        StoreLifeFixture::SetUp();
        SessionGuards::state() = {};
        ASSERT_EQ(create(Pass), 0);
        ui.shown.clear();
        ui.modalsShown = 0;
    }
    void TearDown() override {
        SessionGuards::state() = {};
        StoreLifeFixture::TearDown();
    }
    // The stored settings as the next session reads them.
    static void reload() {
        Startvariables::state() = {};
        Startvariables::LoadStartVariables();
        Startvariables::LoadUserFieldNames(frmOptions::AddressSection);
        Users::LoadPin();
    }
    frmOptions loaded() {
        frmOptions w;
        w.Form_Load();
        return w;
    }
    const QString wrongPassphrase = LanguageUS::MessageText(85);
};

TEST_F(frmOptionsTest, LoadAsksNothingAndLocksTheGuardedControls) {
    frmOptions w = loaded();
    EXPECT_EQ(ui.modalsShown, 0);
    EXPECT_TRUE(w.chkShowPrivate);
    EXPECT_FALSE(w.UpDownIdleEnabled);
    EXPECT_FALSE(w.PinFrameVisible);
    EXPECT_FALSE(w.BudgetFrameVisible);
    EXPECT_EQ(w.cboStartApp.ListIndex(), -1) << "start section 0 is none of the sections";
    EXPECT_EQ(frmOptions::TimeText(w.Times[frmOptions::WorkdayStart]), QStringLiteral("08:00"));
    EXPECT_EQ(w.txtUserDefined[3], QStringLiteral("User4"));
}

TEST_F(frmOptionsTest, SpinnersKeepTheirLimits) {
    frmOptions w = loaded();
    w.UpDownIdle_Change(true);
    EXPECT_EQ(w.Idle, 5) << "locked until the passphrase is given";

    type(Pass);
    w.cmdChangeIdle_Click();
    EXPECT_TRUE(w.UpDownIdleEnabled);
    EXPECT_FALSE(w.cmdChangeIdleEnabled);
    for (int i = 0; i < 20; ++i)
        w.UpDownIdle_Change(true);
    EXPECT_EQ(w.Idle, 15);
    for (int i = 0; i < 20; ++i)
        w.UpDownIdle_Change(false);
    EXPECT_EQ(w.Idle, 0);

    using B = frmOptions::TimeBox;
    w.Times = {480, 1380, 30};
    EXPECT_TRUE(w.udHN_Change(B::WorkdayEnd, true, true));
    EXPECT_EQ(w.Times[B::WorkdayEnd], 1425) << "up stops at 23:45";
    EXPECT_FALSE(w.udHN_Change(B::WorkdayEnd, false, true));
    EXPECT_TRUE(w.udHN_Change(B::DisplayFrom, false, false));
    EXPECT_EQ(w.Times[B::DisplayFrom], 15);
    EXPECT_TRUE(w.udHN_Change(B::DisplayFrom, true, false));
    EXPECT_EQ(w.Times[B::DisplayFrom], 0) << "down stops at 0";
    EXPECT_FALSE(w.udHN_Change(B::DisplayFrom, false, false));

    w.Times = {960, 1020, 450};
    EXPECT_FALSE(w.udHN_Change(B::WorkdayStart, true, true)) << "start would reach the end";
    EXPECT_TRUE(w.udHN_Change(B::WorkdayStart, false, true));
    EXPECT_FALSE(w.udHN_Change(B::WorkdayEnd, true, false));
    EXPECT_EQ(w.Times[B::WorkdayStart], 975);
    EXPECT_EQ(w.Times[B::WorkdayEnd], 1020);
}

TEST_F(frmOptionsTest, GuardsAskThePassphraseAndAWrongOneChangesNothing) {
    frmOptions w = loaded();
    w.chkShowPrivate_Click(false);
    EXPECT_EQ(ui.modalsShown, 0) << "unticking needs nothing";

    type(WrongPass);
    w.chkShowPrivate_Click(true);
    type(WrongPass);
    w.cmdChangeIdle_Click();
    type(WrongPass);
    w.cmdPIN_Click();
    w.SSTab1_Click(frmOptions::TabCalendar);
    type(WrongPass);
    w.SSTab1_Click(frmOptions::TabBudget);
    EXPECT_FALSE(w.chkShowPrivate);
    EXPECT_FALSE(w.UpDownIdleEnabled);
    EXPECT_FALSE(w.PinFrameVisible);
    EXPECT_FALSE(w.BudgetFrameVisible);
    EXPECT_EQ(w.SSTab1, frmOptions::TabCalendar) << "back to the tab it came from";
    EXPECT_EQ(ui.shown, QStringList(4, wrongPassphrase));
    EXPECT_EQ(ui.standBys, 4);

    ui.shown.clear();
    for (int i = 0; i < 3; ++i)
        type(Pass);
    w.chkShowPrivate_Click(true);
    w.cmdPIN_Click();
    w.SSTab1_Click(frmOptions::TabBudget);
    EXPECT_TRUE(w.chkShowPrivate);
    EXPECT_TRUE(w.PinFrameVisible);
    EXPECT_TRUE(w.BudgetFrameVisible);
    EXPECT_EQ(w.SSTab1, frmOptions::TabBudget);
    EXPECT_TRUE(ui.shown.isEmpty());

    const int asked = ui.modalsShown;
    w.SSTab1_Click(frmOptions::TabStartup);
    w.SSTab1_Click(frmOptions::TabBudget);
    w.cmdPINhide_Click();
    EXPECT_EQ(ui.modalsShown, asked) << "open frames and hiding ask nothing";
    EXPECT_FALSE(w.PinFrameVisible);
}

TEST_F(frmOptionsTest, OkStoresEverySettingAndThePin) {
    frmOptions w = loaded();
    w.Idle = 9;
    w.BudgetShow = {true, false, false, true, false, true, false, false, true, true, true, true};
    w.chkShowPrivate = false;
    w.txtUserDefined = {QStringLiteral("Birthday"), QString(), QStringLiteral("Spouse"), QString()};
    w.StartScreen_Click(1);
    w.CalView = 3;
    w.AppDuration = 6;
    w.Times = {420, 1080, 360};
    w.DiaryShow = 0;
    w.CatShow = 1;
    w.TodoShowCompleted = true;
    w.BudgetPrimary = 2;
    w.PIN = QStringLiteral("x7");
    w.PinApp = {false, true, false, false, false, true, false, false, true};
    w.PINeveryaccess = 1;
    w.cmdOK_Click();
    EXPECT_TRUE(w.closeRequested);
    EXPECT_TRUE(w.acceptedResult);
    EXPECT_FALSE(SessionGuards::state().ShowPrivate) << "taken over at once";
    EXPECT_EQ(w.cboStartApp.ListIndex(), 0) << "no choice takes the first section";

    reload();
    const Startvariables::State &v = Startvariables::state();
    EXPECT_EQ(v.IdleMinutes, 9);
    EXPECT_EQ(v.BudgetShow1, 0b1001);
    EXPECT_EQ(v.BudgetShow2, 0b0010);
    EXPECT_EQ(v.BudgetShow3, 0b1111);
    EXPECT_FALSE(v.ShowPrivateDefault);
    EXPECT_EQ(v.StartScreen, 1);
    EXPECT_EQ(v.StartApp, 12);
    EXPECT_EQ(v.CalView, 3);
    EXPECT_EQ(v.CalSlotMinutes, 120);
    EXPECT_DOUBLE_EQ(v.DayStart, 7.0 / 24.0);
    EXPECT_DOUBLE_EQ(v.DayEnd, 18.0 / 24.0);
    EXPECT_DOUBLE_EQ(v.DayFirstShown, 0.25);
    EXPECT_EQ(v.DiaryShow, 0);
    EXPECT_EQ(v.CatShow, 1);
    EXPECT_EQ(v.TodoShowCompleted, 1);
    EXPECT_EQ(v.BudgetPrimary, 2);
    EXPECT_EQ(v.UserFieldNames[0], QStringLiteral("Birthday"));
    EXPECT_EQ(v.UserFieldNames[1], QStringLiteral("User2")) << "an empty box keeps the name";
    EXPECT_EQ(v.UserFieldNames[2], QStringLiteral("Spouse"));

    const Users::State &u = Users::state();
    EXPECT_EQ(u.Pin, QStringLiteral("x7"));
    EXPECT_EQ(u.PinKind, 1);
    EXPECT_EQ(u.PinSections, 0b100100010);
    EXPECT_TRUE(u.PinEveryAccess);

    frmOptions again = loaded();
    EXPECT_EQ(again.cboStartApp.Text(), QStringLiteral("Calendar"));
    EXPECT_TRUE(again.cboStartAppEnabled);
    EXPECT_EQ(again.Times, (std::array<int, 3>{420, 1080, 360}));
}

TEST_F(frmOptionsTest, ThePinIsWrittenLastAfterTheSettingsAreStored) {
    frmOptions w = loaded();
    w.Idle = 12;
    w.txtUserDefined[0] = QStringLiteral("Nickname");
    Users::state().User.RowId = 987654; // the user's row is gone
    try {
        w.cmdOK_Click();
        ADD_FAILURE() << "a missing user row ends the program";
    } catch (const km::ProgramEnd &end) {
        EXPECT_EQ(end.message, 109);
    }
    EXPECT_FALSE(w.closeRequested);
    Startvariables::state() = {};
    Startvariables::LoadStartVariables();
    Startvariables::LoadUserFieldNames(frmOptions::AddressSection);
    EXPECT_EQ(Startvariables::state().IdleMinutes, 12);
    EXPECT_EQ(Startvariables::state().UserFieldNames[0], QStringLiteral("Nickname"));
}

TEST_F(frmOptionsTest, CancelStoresNothingAndANewPassphraseBringsItsDefaultPin) {
    Users::WritePin(1, QStringLiteral("4711"), 0b11, true);
    frmOptions w = loaded();
    EXPECT_EQ(w.PIN, QStringLiteral("4711"));
    EXPECT_EQ(w.PinApp[1], true);
    w.Idle = 1;
    w.cmdCancel_Click();
    EXPECT_FALSE(w.acceptedResult);
    reload();
    EXPECT_EQ(Startvariables::state().IdleMinutes, 5);

    ui.mainUp = true;
    type(Pass);
    typeNew(QStringLiteral("battery staple 9"));
    w.cmdPWchange_Click();
    EXPECT_NE(w.PIN, QStringLiteral("4711"));
    EXPECT_EQ(w.PIN, Users::state().Pin);
    EXPECT_EQ(w.PINeveryaccess, 0);
    w.cmdOK_Click();
    reload();
    EXPECT_EQ(Users::state().PinKind, 0) << "the default PIN stays the default";
}

} // namespace

// OK may hide private records; it shows them only when the passphrase was
// given for it in this window, never because the box loaded ticked.
TEST_F(frmOptionsTest, OkShowsHiddenPrivateRecordsOnlyAfterThePassphrase) {
    km::test::FakeShell shell;
    shell.showPrivate = false;
    {
        frmOptions w(&shell);
        w.Form_Load();
        ASSERT_TRUE(w.chkShowPrivate) << "the stored default";
        w.cmdOK_Click();
        EXPECT_FALSE(shell.showPrivate);
        EXPECT_EQ(ui.modalsShown, 0);
    }
    {
        frmOptions w(&shell);
        w.Form_Load();
        w.chkShowPrivate_Click(false);
        type(Pass);
        w.chkShowPrivate_Click(true);
        w.cmdOK_Click();
        EXPECT_TRUE(shell.showPrivate);
    }
    {
        frmOptions w(&shell);
        w.Form_Load();
        w.chkShowPrivate_Click(false);
        w.cmdOK_Click();
        EXPECT_FALSE(shell.showPrivate) << "unticking hides at once";
    }
}
