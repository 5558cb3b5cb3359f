// The memo and confidential windows on a display (offscreen), over models
// that write to a real store: what the person sees after the model changed.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QToolButton>

#include "gui/records/frmClassified.h"
#include "gui/records/frmNotepad.h"
#include "records/frmClassified.h"
#include "records/frmNotepad.h"
#include "store/CATEGORIES.h"
#include "support/SectionFixture.h"

namespace {

void startApp() {
    static int argc = 1;
    static char name[] = "test_gui";
    static char *argv[] = {name, nullptr};
    if (!qApp) new QApplication(argc, argv);
}

class RecordsViewsTest : public km::test::SectionFixture {
protected:
    void SetUp() override {
        startApp();
        SectionFixture::SetUp();
    }
};

} // namespace

TEST_F(RecordsViewsTest, AMemoAddedThroughTheModelShowsInTheList) {
    km::frmNotepad model(context());
    model.Form_Load();
    km::gui::frmNotepad view(model);
    view.sync();
    EXPECT_EQ(view.ListSelect->count(), 0);

    for (const char *subject : {"Zebra crossing", "apple pie"}) {
        ui.answerInput(QString::fromLatin1(subject));
        ui.onModal<km::frmEditNotepad>([](km::frmEditNotepad &e) {
            e.ctlNote = QStringLiteral("two eggs");
            e.cmdOK_Click();
            return true;
        });
        model.cmdAdd_Click();
    }
    view.sync();
    ASSERT_EQ(view.ListSelect->count(), 2);
    EXPECT_EQ(view.ListSelect->item(0)->text(), QStringLiteral("apple pie"));
    EXPECT_EQ(view.ListSelect->item(1)->text(), QStringLiteral("Zebra crossing"));
    // The last one saved is the one on show.
    EXPECT_EQ(view.ListSelect->currentRow(), 0);
    EXPECT_EQ(view.txtSubject->text(), QStringLiteral("apple pie"));
    EXPECT_EQ(view.txtInput->toPlainText(), QStringLiteral("two eggs"));

    // A click on the list goes to the model and the pane follows.
    view.ListSelect->setCurrentRow(1);
    EXPECT_EQ(model.ListSelect.ListIndex(), 1);
    EXPECT_EQ(view.txtSubject->text(), QStringLiteral("Zebra crossing"));
}

TEST_F(RecordsViewsTest, PasswordFieldIsMaskedUntilShowPlainPassword) {
    km::frmClassified model(context());
    model.Form_Load(); // Web Login: Name, URL, User ID, Password
    model.newRecord = true;
    model.txtCtl = {QStringLiteral("Shop"), QStringLiteral("https://shop.example"), QStringLiteral("jo"),
                    QStringLiteral("hunter2"), QString()};
    model.listSelect_Initialize(model.SaveRecord());
    km::gui::frmClassified view(model);
    view.show();
    view.sync();

    ASSERT_EQ(view.listSelect->count(), 1);
    EXPECT_EQ(view.txtCtl[3]->text(), QStringLiteral("hunter2"));
    EXPECT_EQ(view.txtCtl[3]->echoMode(), QLineEdit::Password);
    EXPECT_EQ(view.txtCtl[2]->echoMode(), QLineEdit::Normal);
    EXPECT_FALSE(view.txtCtl[4]->isVisible()); // four labels in this kind

    view.chkPlainPW->click();
    EXPECT_TRUE(model.chkPlainPW);
    EXPECT_EQ(view.txtCtl[3]->echoMode(), QLineEdit::Normal);
    view.chkPlainPW->click();
    EXPECT_EQ(view.txtCtl[3]->echoMode(), QLineEdit::Password);

    // A kind with five labels shows the fifth field; "PIN Code" masks too.
    view.cat.at(7)->click();
    EXPECT_EQ(model.cat, 7);
    EXPECT_TRUE(view.txtCtl[4]->isVisible());
    EXPECT_EQ(view.txtCtl[4]->echoMode(), QLineEdit::Password);
    EXPECT_EQ(view.listSelect->count(), 0);
}
