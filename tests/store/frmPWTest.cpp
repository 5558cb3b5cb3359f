// The passphrase and PIN dialog: when OK may be pressed, the weak-passphrase
// question, the confirmation entry and cancel.
#include <gtest/gtest.h>

#include "ui/LanguageUS.h"
#include "store/frmPW.h"
#include "support/ScriptedDialogs.h"

using km::frmPW;

namespace {

QString msg(int row) {
    return LanguageUS::MessageText(row);
}

class frmPWTest : public ::testing::Test {
protected:
    // The dialog as the key chain prepares it for a new passphrase.
    static void prepareNew(frmPW &w) {
        w.lblPrompt = msg(99);
        w.chkPwLength = true;
        w.chkConfirm = true;
        w.chkCheckPWquality = true;
        w.Form_Load();
    }
    static void enter(frmPW &w, const QString &text) {
        w.txtInput = text;
        w.txtInput_Change();
        w.cmdOK_Click();
    }
    km::test::ScriptedDialogs ui;
};

TEST_F(frmPWTest, OkIsEnabledFromEightCharactersOrAlwaysWithoutTheLengthRule) {
    struct Case {
        bool lengthRule;
        QString text;
        bool enabled;
    };
    const Case cases[] = {
        {true, "", false}, {true, "1234567", false}, {true, "12345678", true}, {true, "a long one 1", true},
        {false, "", true}, {false, "1", true},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.text.toStdString());
        frmPW w;
        w.chkPwLength = c.lengthRule;
        w.Form_Load();
        w.txtInput = c.text;
        w.txtInput_Change();
        EXPECT_EQ(w.cmdOKEnabled, c.enabled);
        w.cmdOK_Click();
        EXPECT_EQ(w.closeRequested, c.enabled) << "a disabled OK does nothing";
    }
}

TEST_F(frmPWTest, ShowClearUnmasksTheText) {
    frmPW w;
    w.Form_Load();
    EXPECT_TRUE(w.masked);
    w.chkShowClear = true;
    w.chkShowClear_Click();
    EXPECT_FALSE(w.masked);
    w.chkShowClear = false;
    w.chkShowClear_Click();
    EXPECT_TRUE(w.masked);
}

TEST_F(frmPWTest, OnlyLettersAndBlanksMakeAWeakPassphrase) {
    struct Case {
        QString text;
        bool weak;
    };
    const Case cases[] = {
        {"abcdefgh", true},           {"Correct Horse Battery", true},
        {"ABCDEFGH", true},           {"abcdefg1", false},
        {"abcdefg!", false},          {"abc_defgh", false},
        {"caf\u00e9 au lait", false}, {"tab\there", false},
        {"Zz[zzzzz", false},
    };
    for (const Case &c : cases)
        EXPECT_EQ(km::IsWeakPassphrase(c.text), c.weak) << c.text.toStdString();
}

TEST_F(frmPWTest, AWeakPassphraseIsAskedAboutYesKeepsItNoClearsAndStays) {
    frmPW w;
    prepareNew(w);
    ui.answer(km::Answer::No);
    enter(w, "onlyletters");
    EXPECT_EQ(ui.shown, QStringList({msg(158)}));
    EXPECT_TRUE(w.txtInput.isEmpty());
    EXPECT_FALSE(w.cmdOKEnabled);
    EXPECT_FALSE(w.closeRequested);
    EXPECT_EQ(w.lblPrompt, msg(99)) << "still the first entry";

    ui.answer(km::Answer::Yes);
    enter(w, "onlyletters");
    EXPECT_EQ(w.lblPrompt, msg(42));
    enter(w, "onlyletters"); // the confirmation is not judged again
    EXPECT_EQ(ui.shown.size(), 2);
    EXPECT_TRUE(w.closeRequested);
    EXPECT_TRUE(w.acceptedResult);
    EXPECT_EQ(w.PassphraseRaw, "onlyletters");

    frmPW strong;
    prepareNew(strong);
    ui.shown.clear();
    enter(strong, "mixed 42 letters");
    EXPECT_TRUE(ui.shown.isEmpty());
}

TEST_F(frmPWTest, TheConfirmationMustMatchRetryStartsOver) {
    frmPW w;
    prepareNew(w);
    enter(w, "first try 1");
    EXPECT_EQ(w.lblPrompt, "Confirm passphrase:");
    EXPECT_TRUE(w.txtInput.isEmpty());
    EXPECT_FALSE(w.closeRequested);

    ui.answer(km::Answer::Retry);
    enter(w, "first try 2");
    EXPECT_EQ(ui.shown, QStringList({msg(84)}));
    EXPECT_EQ(w.lblPrompt, msg(99));
    EXPECT_FALSE(w.closeRequested);

    ui.answer(km::Answer::No); // the new first entry is judged again
    enter(w, "weakagain");
    EXPECT_EQ(ui.shown.last(), msg(158));
    enter(w, "second try 3");
    enter(w, "second try 3");
    EXPECT_TRUE(w.acceptedResult);
    EXPECT_EQ(w.PassphraseRaw, "second try 3");
    EXPECT_FALSE(w.DialogCancelled);
}

TEST_F(frmPWTest, CancelAtAMismatchEndsTheProgram) {
    frmPW w;
    prepareNew(w);
    enter(w, "first try 1");
    ui.answer(km::Answer::Cancel);
    w.txtInput = "first try 2";
    w.txtInput_Change();
    EXPECT_THROW(w.cmdOK_Click(), km::ProgramEnd);
    EXPECT_TRUE(w.DialogCancelled);
    EXPECT_TRUE(w.PassphraseRaw.isEmpty());
}

TEST_F(frmPWTest, CancelSetsTheFlagAndKeepsNothing) {
    frmPW w;
    prepareNew(w);
    enter(w, "first try 1");
    w.txtInput = "half typ";
    w.cmdCancel_Click();
    EXPECT_TRUE(w.DialogCancelled);
    EXPECT_TRUE(w.closeRequested);
    EXPECT_FALSE(w.acceptedResult);
    EXPECT_TRUE(w.txtInput.isEmpty());
    EXPECT_TRUE(w.PassphraseRaw.isEmpty());

    // Shown again, the dialog starts from a clean first entry.
    w.lblPrompt = msg(99);
    w.Form_Load();
    EXPECT_FALSE(w.DialogCancelled);
    enter(w, "new start 5");
    EXPECT_EQ(w.lblPrompt, msg(42));
}

} // namespace
