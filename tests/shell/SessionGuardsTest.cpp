#include <gtest/gtest.h>

#include "shell/MainWindowTestSupport.h"
#include "ui/LanguageUS.h"

namespace km::test {
namespace {

TEST(CountdownTextTest, MinutesAndSecondsTwoDigitsEach) {
    const std::pair<int, const char *> cases[] = {{299, "Idle Countdown:  04:59"},
                                                  {900, "Idle Countdown:  15:00"},
                                                  {61, "Idle Countdown:  01:01"},
                                                  {0, "Idle Countdown:  00:00"}};
    for (const auto &[seconds, text] : cases)
        EXPECT_EQ(SessionGuards::CountdownText(seconds), QString::fromLatin1(text)) << seconds;
}

using IdleTest = MainWindowFixture;

TEST_F(IdleTest, FifteenMinutesReadFifteenThenFourteenFiftyNine) {
    Startvariables::state().IdleMinutes = 15;
    SessionGuards::InstallIdleHooks();
    w->timerTimeout_Timer();
    EXPECT_EQ(w->panelAutoshutoff, "Idle Countdown:  15:00");
    clock.advanceMSecs(1000);
    w->timerTimeout_Timer();
    EXPECT_EQ(w->panelAutoshutoff, "Idle Countdown:  14:59");
}

// The countdown ends the program at the minute set, with or without a modal
// dialog standing in the way, and closes the store on the way out.
TEST_F(IdleTest, EndsAtIdleMinutesEvenUnderAModalDialog) {
    for (bool modal : {false, true}) {
        SCOPED_TRACE(modal ? "modal dialog up" : "no dialog");
        TearDown();
        SetUp();
        ASSERT_TRUE(startOpen());
        ASSERT_TRUE(db::state().DbOpen);
        Startvariables::state().IdleMinutes = 1;
        modalUp = modal;

        clock.advanceSecs(40);
        SessionGuards::NoteActivity(); // a key in one of the program's windows
        clock.advanceSecs(59);
        w->timerTimeout_Timer();
        EXPECT_EQ(w->panelAutoshutoff, "Idle Countdown:  00:01");
        EXPECT_EQ(ends, 0);

        clock.advanceSecs(1);
        w->timerTimeout_Timer();
        EXPECT_EQ(ends, 1);
        EXPECT_EQ(unloadRequests, 1);
        EXPECT_FALSE(db::state().DbOpen);
        EXPECT_FALSE(CRY::KeyTableLoaded());
        EXPECT_FALSE(SessionGuards::state().HooksInstalled);
    }
}

TEST_F(IdleTest, ZeroMinutesNeverEndsAndShowsNoCountdown) {
    Startvariables::state().IdleMinutes = 0;
    SessionGuards::InstallIdleHooks();
    clock.advanceSecs(24 * 3600);
    w->fireDueTimers();
    w->timerTimeout_Timer();
    EXPECT_EQ(ends, 0);
    EXPECT_EQ(unloadRequests, 0);
    EXPECT_TRUE(w->panelAutoshutoff.isEmpty());
}

// Activity counts only once the hooks are in; a busy program is never idle.
TEST_F(IdleTest, ActivityBusyAndHooks) {
    clock.advanceSecs(10);
    SessionGuards::NoteActivity();
    EXPECT_EQ(SessionGuards::IdleMilliseconds(), 10000);
    SessionGuards::InstallIdleHooks();
    clock.advanceSecs(5);
    SessionGuards::NoteActivity();
    clock.advanceSecs(2);
    EXPECT_EQ(SessionGuards::IdleMilliseconds(), 2000);

    SectionLog log;
    LoggingSection section(11, log);
    w->setBusy(&section, true);
    clock.advanceSecs(600);
    EXPECT_EQ(SessionGuards::IdleMilliseconds(), 0);
    EXPECT_TRUE(desk.waitCursor);
    EXPECT_FALSE(w->enabled);
    EXPECT_FALSE(section.enabled);
    w->setBusy(&section, false);
    clock.advanceSecs(3);
    EXPECT_EQ(SessionGuards::IdleMilliseconds(), 3000);
    EXPECT_FALSE(desk.waitCursor);
    EXPECT_TRUE(w->enabled);
    EXPECT_TRUE(section.enabled);

    SessionGuards::RemoveIdleHooks();
    clock.advanceSecs(1);
    SessionGuards::NoteActivity();
    EXPECT_EQ(SessionGuards::IdleMilliseconds(), 4000);
}

using ClipboardTest = MainWindowFixture;

// Text copied elsewhere before the start is gone 30 seconds later: first
// overwritten with random text of its length, then cleared.
TEST_F(ClipboardTest, WipedThirtySecondsAfterStart) {
    clip.current = QStringLiteral("account 4711");
    clock.advanceSecs(29);
    w->fireDueTimers();
    EXPECT_EQ(clip.current, "account 4711");
    clock.advanceSecs(1);
    w->fireDueTimers();
    EXPECT_TRUE(clip.current.isEmpty());
    ASSERT_EQ(clip.written.size(), 1);
    EXPECT_EQ(clip.written[0].size(), 12);
    EXPECT_NE(clip.written[0], "account 4711");
    EXPECT_FALSE(w->timerClipboard.Enabled);
}

// The selection goes with every wipe, by the timer or at the exit, even when
// the clipboard held nothing.
TEST_F(ClipboardTest, EveryWipeEmptiesTheSelectionToo) {
    clock.advanceSecs(30);
    w->fireDueTimers();
    EXPECT_EQ(clip.selectionClears, 1);
    EXPECT_TRUE(clip.written.isEmpty());
    w->mnuFileQuit_Click();
    EXPECT_EQ(clip.selectionClears, 2);
}

// Copy and Cut give the text its full 30 seconds each time; arming alone
// does not restart a running timer.
TEST_F(ClipboardTest, CopyAndCutRestartTheTimerArmingDoesNot) {
    for (bool cut : {false, true}) {
        SCOPED_TRACE(cut ? "Cut" : "Copy");
        ActiveControl control{true, QStringLiteral("user: secret1"), 6, 7};
        const auto command = [&] { cut ? w->mnuEditCut_Click(control) : w->mnuEditCopy_Click(control); };
        command();
        EXPECT_EQ(clip.current, "secret1");
        EXPECT_TRUE(clip.allSecret);
        EXPECT_EQ(control.text, cut ? "user: " : "user: secret1");

        clock.advanceSecs(20);
        control = {true, QStringLiteral("user: secret1"), 6, 7};
        command();
        clock.advanceSecs(20);
        w->fireDueTimers();
        EXPECT_EQ(clip.current, "secret1");

        w->armClipboardWipe();
        clock.advanceSecs(10);
        w->fireDueTimers();
        EXPECT_TRUE(clip.current.isEmpty());
    }
}

// What a section copies goes through the same Copy: marked secret, under the wipe.
TEST_F(ClipboardTest, ASectionsCopyIsTheProgramsCopy) {
    w->timerClipboard.setEnabled(false);
    w->copyText(QStringLiteral("pa55word"));
    EXPECT_EQ(clip.current, "pa55word");
    EXPECT_TRUE(clip.allSecret);
    EXPECT_TRUE(w->timerClipboard.Enabled);
    clock.advanceSecs(30);
    w->fireDueTimers();
    EXPECT_TRUE(clip.current.isEmpty());
}

// Copy from a field that shows a record's value takes all of it when nothing
// is selected, and from a masked one always. Cut takes what Copy took.
TEST_F(ClipboardTest, ARecordFieldWithNothingSelectedOrMaskedCopiesItsWholeValue) {
    struct Case {
        const char *name;
        ActiveControl control;
        bool cut;
        QString copied, left;
    };
    const auto field = [](int start, int length, bool record, bool masked) {
        ActiveControl c{true, QStringLiteral("hunter2"), start, length};
        c.recordValue = record;
        c.masked = masked;
        return c;
    };
    const std::vector<Case> cases = {
        {"a text box with nothing selected copies nothing", field(3, 0, false, false), false, "", "hunter2"},
        {"a record field with nothing selected", field(3, 0, true, false), false, "hunter2", "hunter2"},
        {"a record field's selection", field(0, 6, true, false), false, "hunter", "hunter2"},
        {"a masked field with some selected", field(0, 6, true, true), false, "hunter2", "hunter2"},
        {"Cut of a masked field", field(2, 1, true, true), true, "hunter2", ""},
        {"Cut of a record field's selection", field(6, 1, true, false), true, "2", "hunter"},
    };
    for (Case c : cases) {
        SCOPED_TRACE(c.name);
        clip.current.clear();
        w->timerClipboard.setEnabled(false);
        c.cut ? w->mnuEditCut_Click(c.control) : w->mnuEditCopy_Click(c.control);
        EXPECT_EQ(clip.current, c.copied);
        EXPECT_EQ(c.control.text, c.left);
        EXPECT_TRUE(w->timerClipboard.Enabled);
    }
    EXPECT_TRUE(clip.allSecret);
}

TEST_F(ClipboardTest, PasteReplacesTheSelection) {
    clip.current = QStringLiteral("XY");
    ActiveControl control{true, QStringLiteral("abcdef"), 2, 2};
    w->mnuEditPaste_Click(control);
    EXPECT_EQ(control.text, "abXYef");
    EXPECT_EQ(control.selStart, 4);
}

TEST_F(ClipboardTest, ExitWipesWhateverTheTimer) {
    w->timerClipboard.setEnabled(false);
    clip.current = QStringLiteral("pin 1234");
    w->mnuFileQuit_Click();
    EXPECT_TRUE(clip.current.isEmpty());
    EXPECT_EQ(clip.written.size(), 1);
    EXPECT_EQ(ends, 1);
}

using StandByTest = MainWindowFixture;

TEST_F(StandByTest, StandsByUntilTimerPWAndTakesNoInput) {
    QStringList seen;
    desk.duringEvents = [&] { seen << w->panelComment + (w->enabled ? "+" : "-"); };
    w->StandByPause();
    ASSERT_FALSE(seen.isEmpty());
    EXPECT_EQ(seen.count("Stand By-"), seen.size() - 1); // the first round comes before it
    EXPECT_FALSE(w->timerPW.Enabled);
    EXPECT_TRUE(w->panelComment.isEmpty());
    EXPECT_TRUE(w->enabled);
    EXPECT_FALSE(desk.waitCursor);
}

using PrivateTest = MainWindowFixture;

TEST_F(PrivateTest, SwitchAsksOnlyToShowAndLockOnlyHides) {
    ASSERT_TRUE(startOpen());
    w->setPrivateShown(false);
    EXPECT_EQ(w->menu("mnuViewShowPrivate")->caption, "Show Private Records");
    EXPECT_FALSE(w->toolButton(3).enabled);

    // A wrong passphrase leaves them hidden.
    type(QStringLiteral("wrong passphrase"));
    w->mnuViewShowPrivate_Click();
    EXPECT_FALSE(SessionGuards::state().ShowPrivate);
    EXPECT_TRUE(ui.shown.contains(LanguageUS::MessageText(85)));

    type(QString::fromLatin1(kPass));
    w->mnuViewShowPrivate_Click();
    EXPECT_TRUE(SessionGuards::state().ShowPrivate);
    EXPECT_EQ(w->menu("mnuViewShowPrivate")->caption, "Hide Private Records");
    EXPECT_TRUE(w->toolButton(3).enabled);

    const int modals = ui.modalsShown;
    w->Toolbar1_ButtonClick(QStringLiteral("Lock"));
    EXPECT_EQ(ui.modalsShown, modals); // hiding asks nothing
    EXPECT_FALSE(SessionGuards::state().ShowPrivate);
    EXPECT_FALSE(w->toolButton(3).enabled);
}

TEST_F(PrivateTest, HidingClosesTheDiaryAndRebuildsOtherLists) {
    ASSERT_TRUE(startOpen());
    SectionLog diary, memo;
    registerLogging(13, diary);
    registerLogging(14, memo);
    SessionGuards::state().ShowPrivate = true;

    w->GoToSection(buttonOf(14));
    w->Toolbar1_ButtonClick(QStringLiteral("Lock"));
    EXPECT_EQ(memo.hideShows, 1);
    EXPECT_EQ(w->CurrentSection, 14);

    type(QString::fromLatin1(kPass));
    w->mnuViewShowPrivate_Click();
    w->GoToSection(buttonOf(13));
    ASSERT_EQ(w->CurrentSection, 13);
    w->Toolbar1_ButtonClick(QStringLiteral("Lock"));
    EXPECT_EQ(w->CurrentSection, 0);
    EXPECT_EQ(diary.unloads, 1);
    EXPECT_NE(dynamic_cast<frmSplash *>(w->section()), nullptr);

    // Nor can it be entered while they are hidden.
    w->GoToSection(buttonOf(13));
    EXPECT_EQ(w->CurrentSection, 0);
    EXPECT_EQ(diary.loads, 1);
    EXPECT_TRUE(ui.shown.contains(LanguageUS::MessageText(143)));
}

} // namespace
} // namespace km::test
