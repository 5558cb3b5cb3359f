// The memo and confidential windows on a display (offscreen), over models
// that write to a real store: what the person sees after the model changed.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTimer>
#include <QToolButton>

#include "GuiSupport.h"
#include "gui/records/frmClassified.h"
#include "gui/records/frmNotepad.h"
#include "records/frmClassified.h"
#include "records/frmNotepad.h"
#include "shell/SHIELD.h"
#include "store/CATEGORIES.h"
#include "support/SectionFixture.h"
#include "ui/LanguageUS.h"

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
    // New memos through the model, each with the body "two eggs".
    void addMemos(km::frmNotepad &model, std::initializer_list<const char *> subjects) {
        for (const char *subject : subjects) {
            ui.answerInput(QString::fromLatin1(subject));
            ui.onModal<km::frmEditNotepad>([](km::frmEditNotepad &e) {
                e.ctlNote = QStringLiteral("two eggs");
                e.cmdOK_Click();
                return true;
            });
            model.cmdAdd_Click();
        }
    }
};

} // namespace

TEST_F(RecordsViewsTest, AMemoAddedThroughTheModelShowsInTheList) {
    km::frmNotepad model(context());
    model.Form_Load();
    km::gui::frmNotepad view(model);
    view.sync();
    EXPECT_EQ(view.ListSelect->count(), 0);

    addMemos(model, {"Zebra crossing", "apple pie"});
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

    // A right click on a record's text offers no menu of the box's own, whose
    // Copy would pass the clipboard wipe by.
    view.show();
    for (QWidget *target : {static_cast<QWidget *>(view.txtSubject), view.txtInput->viewport()}) {
        bool popped = false;
        QTimer::singleShot(0, [&popped] {
            if (QWidget *menu = QApplication::activePopupWidget()) {
                popped = true;
                menu->close();
            }
        });
        QContextMenuEvent click(QContextMenuEvent::Mouse, QPoint(5, 5), target->mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(target, &click);
        QApplication::processEvents();
        EXPECT_FALSE(popped) << target->metaObject()->className();
    }
}

// The memo in the pane edits in place under the shield: what is typed goes to
// the model as it is typed, and leaving the memo for another row asks to
// store it and saves it on Yes. The view's own redraws are no edits.
TEST_F(RecordsViewsTest, AMemoEditedInThePaneIsStoredWhenLeft) {
    SHIELD::state() = {};
    shell.showPrivate = true;
    km::frmNotepad model(context());
    model.Form_Load();
    addMemos(model, {"apple pie", "Zebra crossing"});
    km::gui::frmNotepad view(model);
    view.resize(640, 420);
    view.sync();
    ASSERT_TRUE(km::test::bringToFront(view));
    view.ListSelect->setCurrentRow(0);
    const qint64 apple = model.RowId;
    EXPECT_FALSE(model.recordChanged);

    view.txtInput->setFocus();
    view.txtInput->moveCursor(QTextCursor::End);
    QTest::keyClicks(view.txtInput, QStringLiteral(" and flour"));
    // Ctrl with a letter writes the letter: the shield, not the box, took it.
    QTest::keyClick(view.txtInput, Qt::Key_K, Qt::ControlModifier);
    EXPECT_EQ(model.txtInput, QStringLiteral("two eggs and flourk"));
    EXPECT_TRUE(model.recordChanged);

    ui.answer(km::Answer::Yes);
    const QRect other = view.ListSelect->visualItemRect(view.ListSelect->item(1));
    QTest::mouseClick(view.ListSelect->viewport(), Qt::LeftButton, {}, other.center());
    ASSERT_FALSE(ui.shown.isEmpty());
    EXPECT_EQ(ui.shown.last(), LanguageUS::MessageText(26));
    EXPECT_EQ(km::SortedSection::ReadRecord(store(), apple).values.value(km::frmNotepad::Memo),
              QStringLiteral("two eggs and flourk"));
    EXPECT_EQ(view.txtSubject->text(), QStringLiteral("Zebra crossing"));
    EXPECT_EQ(view.txtInput->toPlainText(), QStringLiteral("two eggs"));
    EXPECT_FALSE(model.recordChanged);

    // Outside the pane keys are the controls' own: the list's type-ahead goes
    // back to the first memo, and the unchanged one asks nothing.
    const auto asked = ui.shown.size();
    view.ListSelect->setFocus();
    QTest::keyClick(view.ListSelect, Qt::Key_A, Qt::NoModifier);
    EXPECT_EQ(model.RowId, apple);
    EXPECT_EQ(ui.shown.size(), asked);

    view.ctlPrivate->click();
    EXPECT_TRUE(model.ctlPrivate);
    EXPECT_TRUE(model.recordChanged);
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
