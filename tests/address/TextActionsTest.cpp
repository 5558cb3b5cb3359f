// The right-click actions of a pane: the word taken under the caret, the
// classifier's edge cases, the entries enabled per kind, and the URLs handed
// to the desktop.
#include <gtest/gtest.h>

#include "shell/TextActions.h"
#include "support/FakeShell.h"
#include "support/ScriptedDialogs.h"
#include "ui/LanguageUS.h"
#include "ui/Services.h"

namespace {

using namespace km::TextActions;

class RecordingDesktop : public km::DesktopService {
public:
    void setWaitCursor(bool) override {}
    bool openUrl(const QString &url) override {
        opened << url;
        return true;
    }
    QStringList opened;
};

class TextActionsTest : public ::testing::Test {
protected:
    void SetUp() override { km::setDesktop(&desk); }
    void TearDown() override { km::setDesktop(nullptr); }
    RecordingDesktop desk;
    km::test::ScriptedDialogs ui;
    km::test::FakeShell shell;
};

} // namespace

TEST_F(TextActionsTest, TheTests) {
    EXPECT_TRUE(IsMailAddress(" a.b@c.org "));
    EXPECT_FALSE(IsMailAddress("name@host")) << "no dot behind the at sign";
    EXPECT_FALSE(IsMailAddress("a.@b.org"));
    EXPECT_FALSE(IsMailAddress("a@.b.org"));
    EXPECT_FALSE(IsMailAddress("a..b@c.org"));
    EXPECT_FALSE(IsMailAddress("a@b.org."));

    EXPECT_FALSE(IsWebAddress("www.example"));
    EXPECT_TRUE(IsWebAddress("www.example.com"));
    EXPECT_TRUE(IsWebAddress("WWW.EXAMPLE.COM/x"));
    EXPECT_FALSE(IsWebAddress("http://www.example.com"));
    EXPECT_FALSE(IsWebAddress("www.a--b.com"));

    EXPECT_TRUE(IsPlainWords("Call Anna 2"));
    EXPECT_FALSE(IsPlainWords("Anna!"));
    EXPECT_TRUE(IsPhoneLike("+49 (30) 123-45/6"));
    EXPECT_FALSE(IsPhoneLike("12)3(4"));
    EXPECT_FALSE(IsPhoneLike("12--34"));
    EXPECT_EQ(StripPhone("+49 (30) 123-45/6"), "4930123456");
    EXPECT_EQ(StripBlanks(" 1 2 3 "), "123");
}

TEST_F(TextActionsTest, TheWordUnderTheCaretStopsAtSeparatorsAndIsMarked) {
    Selection box{"Email:\tanna@x.org; bob@y.org\r\nPhone:  +49 30 1234", 12, 0};
    EXPECT_EQ(ClassifySelection(box), MailAddress) << "the tab is a control character, the ; a stop";
    EXPECT_EQ(std::pair(box.selStart, box.selLength), std::pair(7, 10));
    Selection mail{"anna@x.org; bob@y.org", 3, 0};
    EXPECT_EQ(ClassifySelection(mail), MailAddress);
    EXPECT_EQ(mail.selText(), "anna@x.org");
    Selection second{"anna@x.org, bob@y.org", 15, 0};
    EXPECT_EQ(ClassifySelection(second), MailAddress);
    EXPECT_EQ(second.selText(), "bob@y.org") << "leading blanks dropped";
    Selection phone{"Mobile:\t+49 30 1234\r\n", 12, 0};
    EXPECT_EQ(ClassifySelection(phone), OtherText);
    EXPECT_EQ(phone.selText(), "+49 30 1234");
    Selection lines{"one\r\ntwo\r\n", 0, 10};
    EXPECT_EQ(ClassifySelection(lines), MultiLine);
    Selection line{"one two\r\n", 0, 9};
    EXPECT_EQ(ClassifySelection(line), PlainWords) << "a trailing line end is taken off";
    Selection empty{"a;;b", 2, 0};
    EXPECT_EQ(ClassifySelection(empty), Nothing);
}

TEST_F(TextActionsTest, MenuEntriesPerKind) {
    const MenuState plain = MenuFor(PlainWords, "030 1234");
    EXPECT_TRUE(plain.copyStripped);
    EXPECT_TRUE(plain.dial);
    EXPECT_FALSE(plain.sendMail);
    EXPECT_FALSE(MenuFor(PlainWords, "0301234").copyStripped) << "no blank";
    EXPECT_FALSE(MenuFor(PhoneLike, "030-12 34").copyStripped);
    EXPECT_TRUE(MenuFor(PhoneLike, "030-1234").dial);
    EXPECT_TRUE(MenuFor(MailAddress, "a@b.c").sendMail);
    EXPECT_FALSE(MenuFor(MailAddress, "a@b.c").dial);
    EXPECT_TRUE(MenuFor(WebAddress, "www.a.b").openWebsite);
    const MenuState multi = MenuFor(MultiLine, "a b");
    EXPECT_TRUE(multi.copy);
    EXPECT_FALSE(multi.dial || multi.sendMail || multi.openWebsite || multi.copyStripped);
}

TEST_F(TextActionsTest, TheActionsGoToTheDesktopAndTheClipboardGuard) {
    SendMail(ui, "anna@x.org");
    OpenWebsite("www.example.com");
    EXPECT_EQ(desk.opened, QStringList({"mailto:anna@x.org", "http://www.example.com"}));

    // Dial: the prompt warns of a leading "+", the answer is stripped.
    ui.answerInput(QString("+49 (30) 1234"));
    Dial(ui, "+49 (30) 1234", "Anna");
    EXPECT_EQ(ui.inputsAsked.last(), "Phone number (no leading \"+\")");
    EXPECT_EQ(desk.opened.last(), "tel:49301234");
    ui.answerInput(std::nullopt);
    Dial(ui, "030 1234", "Anna");
    EXPECT_EQ(ui.inputsAsked.last(), "Phone number ");
    EXPECT_EQ(desk.opened.size(), 3) << "cancelled";
    MakeCall(ui, "   ", "Anna");
    EXPECT_EQ(ui.shown.last(), LanguageUS::MessageText(165));
    EXPECT_EQ(desk.opened.size(), 3);

    CopyStripped(shell, "030 12 34");
    CopyText(shell, "030 12 34");
    EXPECT_EQ(shell.copied, QStringList({"0301234", "030 12 34"}));
}
